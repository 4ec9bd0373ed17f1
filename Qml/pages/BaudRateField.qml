import QtQuick 2.15
import QtQuick.Layouts 1.15
import "../assembly"

// The baud rate: two choices, or any other typed in.
ColumnLayout {
    id: labelled

    property string value
    readonly property var offers: ["3000000", "3125000"]

    signal commit(string text)
    signal accepted

    function finish() {
        if (combo.editText !== value) {
            commit(combo.editText);
        }
        follow();
    }

    function follow() {
        combo.currentIndex = combo.model.indexOf(value);
        combo.editText = value;
    }

    spacing: Theme.gapTiny / 2
    onValueChanged: Qt.callLater(follow)

    BodyText {
        text: "Baud Rate:"
        color: Theme.textMuted
        font.pixelSize: Theme.fontSmall
        Accessible.ignored: true
    }

    DefaultComboBox {
        id: combo

        objectName: "baudRateCombo"
        Layout.preferredWidth: Theme.buttonWidth + Theme.gap
        Layout.fillWidth: true
        Accessible.name: "Baud Rate"
        editable: true
        enabled: !varkel_manager.IsConnected
        validator: IntValidator {
            bottom: 0
        }
        model: labelled.offers.indexOf(labelled.value) < 0 && labelled.value.length > 0
               ? labelled.offers.concat([labelled.value]) : labelled.offers
        onActivated: labelled.commit(textAt(index))
        onAccepted: {
            labelled.finish();
            labelled.accepted();
        }
        onActiveFocusChanged: {
            if (!activeFocus) {
                labelled.finish();
            }
        }
    }
}
