import QtQuick 2.15
import "../assembly"

// Restart and reset of the sensor, for models that have either.
DefaultToolButton {
    id: button

    property bool available: false

    function lookUp() {
        available = varkel_manager.CheckVarExistsInConfigFileByName("Restart")
                || varkel_manager.CheckVarExistsInConfigFileByName("Reset");
    }

    objectName: "restartButton"
    text: "Restart ▾"
    visible: available && varkel_manager.connectType === 0
    Accessible.name: "Restart or reset"
    onClicked: menu.open()
    Component.onCompleted: lookUp()

    DefaultMenu {
        id: menu

        y: button.height + Theme.gapTiny

        DefaultMenuItem {
            objectName: "restartItem"
            text: "Restart"
            onTriggered: varkel_manager.RestartInBackground()
        }

        DefaultMenuItem {
            objectName: "resetItem"
            text: "Reset All Settings"
            onTriggered: varkel_manager.ResetInBackground()
        }
    }

    Connections {
        target: varkel_manager

        function onLidarModelChanged() {
            button.lookUp();
        }
    }
}
