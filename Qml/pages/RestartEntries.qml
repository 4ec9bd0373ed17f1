import QtQuick 2.15
import "../assembly"

// The items of the restart menu.
DefaultMenu {
    id: menu

    readonly property string blocked: !varkel_manager.IsConnected ? "connect first"
                                      : varkel_manager.IsUpgrading ? "an upgrade is running"
                                      : varkel_manager.IsDownloadLog ? "a download is running" : ""

    signal restartRequested
    signal resetRequested

    y: parent ? parent.height + Theme.gapTiny : 0

    DefaultMenuItem {
        objectName: "restartItem"
        text: "Restart"
        reason: menu.blocked
        onTriggered: menu.restartRequested()
    }

    DefaultMenuItem {
        objectName: "resetItem"
        text: "Reset All Settings"
        reason: menu.blocked
        onTriggered: menu.resetRequested()
    }
}
