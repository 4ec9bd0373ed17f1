import QtQuick 2.15
import "../assembly"

// What drops from the restart button.
DefaultMenu {
    y: parent ? parent.height + Theme.gapTiny : 0

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
