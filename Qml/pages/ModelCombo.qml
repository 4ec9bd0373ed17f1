import QtQuick 2.15
import QtQuick.Layouts 1.15
import "../assembly"

// The sensor's model. It stays as it is while connected or when the program was started for one model.
ColumnLayout {
    id: labelled

    readonly property string selected: combo.currentText
    property bool fixed: false

    signal chosen(string name)

    function load() {
        var startModel = varkel_manager.getVMNowName();
        fixed = startModel.length > 0;
        var names = varkel_manager.LidarModelList.map(String);
        var wanted = fixed ? startModel : combo.currentText.length > 0 ? combo.currentText : "Quenta";
        combo.model = names;
        combo.currentIndex = Math.max(names.length > 0 ? 0 : -1, names.indexOf(wanted));
    }

    spacing: Theme.gapTiny / 2
    Component.onCompleted: load()

    BodyText {
        text: "Model:"
        color: Theme.textMuted
        font.pixelSize: Theme.fontSmall
        Accessible.ignored: true
    }

    DefaultComboBox {
        id: combo

        property int settled: -1

        objectName: "modelCombo"
        Layout.preferredWidth: Theme.buttonWidth + 2 * Theme.margin
        Layout.fillWidth: true
        Accessible.name: "Model"
        enabled: !varkel_manager.IsConnected && !labelled.fixed
        onActivated: {
            if (settled !== index) {
                labelled.chosen(textAt(index));
            }
            settled = index;
        }
        onPressedChanged: settled = currentIndex
    }

    Connections {
        target: varkel_manager

        function onLidarModelListChanged() {
            labelled.load();
        }
    }
}
