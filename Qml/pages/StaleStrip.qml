import QtQuick 2.15
import "../assembly"

// Shown above a page while not connected: where its values come from.
Rectangle {
    id: strip

    property QtObject rows // the page's list model
    readonly property date lastRead: rows ? rows.lastRead : new Date(NaN)
    readonly property string text: isNaN(lastRead) ? "Not connected. Values are the table's defaults"
                                                   : "Not connected. Values last read "
                                                     + lastRead.toLocaleTimeString(Qt.locale("C"), "HH:mm:ss")

    implicitHeight: Theme.stripHeight
    color: Theme.raised

    Rectangle {
        width: Theme.markWidth
        height: parent.height
        color: Theme.warning
    }

    BodyText {
        anchors.fill: parent
        anchors.leftMargin: Theme.margin
        anchors.rightMargin: Theme.margin
        text: strip.text
        color: Theme.textMuted
        elide: Text.ElideRight
    }
}
