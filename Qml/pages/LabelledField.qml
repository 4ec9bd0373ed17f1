import QtQuick 2.15
import QtQuick.Layouts 1.15
import "../assembly"

// A text field of the top bar, below its caption.
ColumnLayout {
    id: labelled

    property alias text: caption.text
    property alias value: field.value
    property alias fieldName: field.objectName
    property alias hint: field.hint
    property alias field: field
    property var keyTakers: [] // items that get the keys before the field does
    property int fieldWidth: Theme.buttonWidth

    signal commit(string text)
    signal accepted

    function show(newValue) {
        field.show(newValue);
    }

    function finish() {
        field.finish();
    }

    spacing: Theme.gapTiny / 2

    BodyText {
        id: caption

        color: Theme.textMuted
        font.pixelSize: Theme.fontSmall
        Accessible.ignored: true
    }

    DefaultTextField {
        id: field

        Layout.preferredWidth: labelled.fieldWidth
        Layout.fillWidth: true
        Accessible.name: caption.text
        Keys.forwardTo: labelled.keyTakers
        readOnly: varkel_manager.IsConnected // then it shows where the connection goes
        onCommit: labelled.commit(text)
        onAccepted: {
            finish();
            labelled.accepted();
        }
    }
}
