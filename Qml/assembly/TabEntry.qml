import QtQuick 2.15
import "."

// One page's entry in the list of pages. Made of plain items, as it is part of the window's first frame: the
// controls' module is loaded after that.
Item {
    id: entry

    property bool current: false
    property string text
    property string shortcutText
    property bool clickedLast: false
    readonly property bool visualFocus: activeFocus && !clickedLast

    signal clicked

    implicitHeight: Theme.tabHeight
    activeFocusOnTab: current || activeFocus

    Accessible.role: Accessible.PageTab
    Accessible.name: text
    Accessible.selected: current
    Accessible.focusable: true
    Accessible.onPressAction: clicked()

    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()
    Keys.onSpacePressed: clicked()

    onActiveFocusChanged: clickedLast = activeFocus && pointer.pressed

    Rectangle {
        anchors.fill: parent
        color: entry.current ? Theme.window
                             : pointer.pressed ? Theme.button
                                               : pointer.containsMouse ? Theme.raised : "transparent"
        border.width: entry.visualFocus ? Theme.line : 0
        border.color: Theme.borderFocus

        Rectangle {
            width: Theme.markWidth
            height: parent.height
            visible: entry.current
            color: Theme.mark
        }
    }

    BodyText {
        anchors.fill: parent
        anchors.leftMargin: Theme.gapLarge
        anchors.rightMargin: Theme.gapSmall
        text: entry.text
        color: entry.current || pointer.containsMouse ? Theme.text : Theme.textMuted
        font.bold: entry.current
        elide: Text.ElideRight
        Accessible.ignored: true
    }

    MouseArea {
        id: pointer

        anchors.fill: parent
        hoverEnabled: true
        onPressed: entry.forceActiveFocus(Qt.MouseFocusReason)
        onClicked: entry.clicked()
    }

    Hint {
        text: entry.shortcutText
        shown: pointer.containsMouse
    }
}
