import QtQuick 2.15
import QtQuick.Layouts 1.15
import "../assembly"

// The sensor's model. It can't be changed while connected, or if the program was started for one model.
ColumnLayout {
    id: labelled

    property string selected
    property bool fixed: false

    signal chosen(string name)

    function load() {
        var startModel = varkel_manager.getVMNowName();
        fixed = startModel.length > 0;
        var names = varkel_manager.LidarModelList.map(String);
        var wanted = fixed ? startModel : selected.length > 0 ? selected : "Quenta";
        combo.model = names;
        combo.currentIndex = Math.max(names.length > 0 ? 0 : -1, names.indexOf(wanted));
        selected = combo.currentText;
    }

    // Selects a model. The window calls this after asking the user if edits would be lost.
    function select(name) {
        combo.currentIndex = combo.model.indexOf(name);
        selected = name;
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

        objectName: "modelCombo"
        Layout.preferredWidth: Theme.buttonWidth + 2 * Theme.margin
        Layout.fillWidth: true
        Accessible.name: "Model"
        enabled: !varkel_manager.IsConnected && !labelled.fixed
        onActivated: {
            var name = textAt(index);
            labelled.select(labelled.selected);
            if (name !== labelled.selected) {
                labelled.chosen(name);
            }
        }
    }

    Connections {
        target: varkel_manager

        function onLidarModelListChanged() {
            labelled.load();
        }
    }
}
