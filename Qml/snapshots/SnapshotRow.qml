import QtQuick 2.15
import "../assembly"

// A snapshot in the list, or its heading.
Item {
    id: row

    property string time
    property string reason
    property string file
    property bool heading: false
    property bool chosen: false
    property bool focused: false
    readonly property color tone: heading ? Theme.textMuted : Theme.text

    signal clicked

    implicitHeight: Theme.rowHeight

    Accessible.role: Accessible.Row
    Accessible.name: time + ", " + reason
    Accessible.selected: chosen

    RowBackground {
        anchors.fill: parent
        color: row.heading ? Theme.bar : row.chosen ? Theme.button : pointer.containsMouse ? Theme.raised : "transparent"
        focused: row.focused
    }

    Rectangle {
        width: Theme.markWidth
        height: parent.height
        visible: row.chosen
        color: Theme.accent
    }

    MouseArea {
        id: pointer

        anchors.fill: parent
        enabled: !row.heading
        hoverEnabled: true
        onClicked: row.clicked()
    }

    Row {
        anchors.fill: parent
        anchors.leftMargin: Theme.gap

        TableCell {
            width: Theme.timeColumn
            height: parent.height
            color: row.tone
            value: row.time
        }

        TableCell {
            width: (parent.width - Theme.timeColumn) / 2
            height: parent.height
            color: row.tone
            value: row.reason
        }

        TableCell {
            width: (parent.width - Theme.timeColumn) / 2
            height: parent.height
            color: row.heading ? row.tone : Theme.textMuted
            value: row.file
        }
    }
}
