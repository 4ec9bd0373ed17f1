import QtQuick 2.15
import "."

Rectangle {
    id: light

    property bool connected: false

    implicitWidth: Theme.light
    implicitHeight: Theme.light
    radius: width / 2
    color: connected ? Theme.connected : Theme.disconnected
    border.width: Theme.line
    border.color: Qt.darker(color, 1.6)

    Accessible.role: Accessible.Indicator
    Accessible.name: connected ? "Connected" : "Not connected"

    HoverHandler {
        id: pointer
    }

    Hint {
        text: light.connected ? "Connected" : "Not connected"
        shown: pointer.hovered
    }
}
