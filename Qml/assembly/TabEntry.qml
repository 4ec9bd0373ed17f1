import QtQuick 2.15
import QtQuick.Templates 2.15 as T
import "."

// One page's entry in the list of pages.
T.AbstractButton {
    id: entry

    property bool current: false
    property string shortcutText

    implicitHeight: Theme.tabHeight
    leftPadding: Theme.gapLarge
    rightPadding: Theme.gapSmall
    hoverEnabled: true
    focusPolicy: Qt.StrongFocus

    Accessible.role: Accessible.PageTab
    Accessible.name: text
    Accessible.selected: current

    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()

    contentItem: BodyText {
        text: entry.text
        color: entry.current || entry.hovered ? Theme.text : Theme.textMuted
        font.bold: entry.current
        elide: Text.ElideRight
        Accessible.ignored: true
    }

    background: Rectangle {
        color: entry.current ? Theme.window
                             : entry.pressed ? Theme.button : entry.hovered ? Theme.raised : "transparent"
        border.width: entry.visualFocus ? Theme.line : 0
        border.color: Theme.borderFocus

        Rectangle {
            width: Theme.markWidth
            height: parent.height
            visible: entry.current
            color: Theme.accent
        }
    }

    Hint {
        text: entry.shortcutText
        shown: entry.hovered
    }
}
