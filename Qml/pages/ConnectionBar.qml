import QtQuick 2.15
import QtQuick.Layouts 1.15
import "../assembly"

// The sensor's address, its model, and the connect button.
RowLayout {
    id: bar

    readonly property alias model: modelCombo.selected

    signal connectRequested
    signal modelChosen(string name)
    signal restartRequested
    signal resetRequested
    signal aboutRequested

    function takeFocus() {
        connectButton.forceActiveFocus(Qt.TabFocusReason);
    }

    function selectModel(name) {
        modelCombo.select(name);
    }

    function pressConnect() {
        if (connectButton.enabled) {
            fields.finish();
            connectRequested();
        }
    }

    spacing: Theme.gap

    ConnectionFields {
        id: fields

        Layout.alignment: Qt.AlignBottom
        onAccepted: {
            if (!varkel_manager.IsConnected) {
                bar.pressConnect();
            }
        }
    }

    Item {
        Layout.fillWidth: true
    }

    ConnectionLight {
        objectName: "connectionLight"
        Layout.alignment: Qt.AlignBottom
        connected: varkel_manager.IsConnected
    }

    ModelCombo {
        id: modelCombo

        Layout.alignment: Qt.AlignBottom
        onChosen: bar.modelChosen(name)
    }

    DefaultToolButton {
        id: connectButton

        objectName: "connectButton"
        Layout.alignment: Qt.AlignBottom
        text: varkel_manager.IsConnected ? "Disconnect" : "Connect"
        primary: !varkel_manager.IsConnected
        enabled: !varkel_manager.IsDownloadLog
        onClicked: bar.pressConnect()
    }

    RestartMenu {
        Layout.alignment: Qt.AlignBottom
        onRestartRequested: bar.restartRequested()
        onResetRequested: bar.resetRequested()
    }

    DefaultToolButton {
        objectName: "aboutButton"
        Layout.alignment: Qt.AlignBottom
        implicitWidth: Theme.buttonWidth - Theme.margin
        text: "About"
        quiet: true
        onClicked: bar.aboutRequested()
    }
}
