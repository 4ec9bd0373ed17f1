import QtQuick 2.15
import "."

// A light and, above it, the same state in words, for users who can't tell its colours apart.
Item {
    id: status

    property bool connected: false
    readonly property color color: connected ? Theme.connected : Theme.disconnected
    readonly property string word: connected ? "Connected" : "Offline"

    implicitWidth: Theme.lightWidth
    implicitHeight: caption.height + Theme.gapTiny / 2 + Theme.controlHeight

    Accessible.role: Accessible.Indicator
    Accessible.name: connected ? "Connected" : "Not connected"

    BodyText {
        id: caption

        anchors.horizontalCenter: parent.horizontalCenter
        color: Theme.textMuted
        font.pixelSize: Theme.fontSmall
        text: status.word
        Accessible.ignored: true
    }

    Rectangle {
        anchors.horizontalCenter: parent.horizontalCenter
        anchors.bottom: parent.bottom
        anchors.bottomMargin: (Theme.controlHeight - height) / 2
        width: Theme.light
        height: Theme.light
        radius: width / 2
        color: status.color
        border.width: Theme.line
        border.color: Qt.darker(color, 1.6)
    }
}
