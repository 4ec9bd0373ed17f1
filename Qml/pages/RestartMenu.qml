import QtQuick 2.15
import "../assembly"

// Restart and reset of the sensor, for models that have at least one of them.
DefaultToolButton {
    id: button

    property bool available: false
    property var menu: null

    signal restartRequested
    signal resetRequested

    function lookUp() {
        available = varkel_manager.CheckVarExistsInConfigFileByName("Restart")
                || varkel_manager.CheckVarExistsInConfigFileByName("Reset");
    }

    function openMenu() {
        if (!menu) {
            menu = Qt.createComponent("RestartEntries.qml").createObject(button);
            menu.restartRequested.connect(restartRequested);
            menu.resetRequested.connect(resetRequested);
        }
        menu.open();
    }

    objectName: "restartButton"
    text: "Restart"
    rightPadding: arrow.width + 2 * Theme.gapSmall
    visible: available && varkel_manager.connectType === 0
    Accessible.name: "Restart or reset"
    onClicked: openMenu()
    Component.onCompleted: lookUp()

    DownArrow {
        id: arrow

        x: button.width - width - Theme.gapSmall
        y: (button.height - height) / 2
    }

    Connections {
        target: varkel_manager

        function onLidarModelChanged() {
            button.lookUp();
        }
    }
}
