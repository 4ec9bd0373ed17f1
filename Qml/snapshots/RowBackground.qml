import QtQuick 2.15
import "../assembly"

// The background of a table row.
Rectangle {
    property bool chosen: false
    property bool hovered: false
    property bool focused: false

    color: chosen ? Theme.button : hovered ? Theme.raised : "transparent"
    border.width: focused ? Theme.line : 0
    border.color: Theme.borderFocus

    Rectangle {
        anchors.bottom: parent.bottom
        width: parent.width
        height: Theme.line
        color: Theme.hairline
    }
}
