import QtQuick 2.15
import "../assembly"

// What to compare the selected row with.
DefaultMenu {
    id: menu

    property bool sensorChosen: true
    property bool connected: false

    signal sensorWanted
    signal fileWanted
    signal defaultsWanted

    y: parent ? parent.height + Theme.gapTiny : 0

    DefaultMenuItem {
        objectName: "compareSensorItem"
        text: "The sensor"
        enabled: menu.connected && !menu.sensorChosen
        onTriggered: menu.sensorWanted()
    }

    DefaultMenuItem {
        objectName: "compareFileItem"
        text: "A file…"
        onTriggered: menu.fileWanted()
    }

    DefaultMenuItem {
        objectName: "compareDefaultsItem"
        text: "The table's defaults"
        onTriggered: menu.defaultsWanted()
    }
}
