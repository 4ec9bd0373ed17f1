import QtQuick 2.15
import "."

// One page's entry in the list of pages. It is made of plain items because it is part of the window's first frame: the
// controls' module is loaded after that.
Item {
    id: entry

    property bool current: false
    property string text
    property string shortcutText
    property int edits: 0 // number of unsaved changes
    property bool clickedLast: false
    readonly property bool visualFocus: activeFocus && !clickedLast

    signal clicked

    implicitHeight: Theme.tabHeight
    activeFocusOnTab: current || activeFocus

    Accessible.role: Accessible.PageTab
    Accessible.name: edits > 0 ? text + ", unsaved changes: " + edits : text
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
        anchors.rightMargin: Theme.gapSmall + (count.item ? count.item.width + Theme.gapTiny : 0)
        text: entry.text
        color: entry.current || pointer.containsMouse ? Theme.text : Theme.textMuted
        font.bold: entry.current
        elide: Text.ElideRight
        Accessible.ignored: true
    }

    Loader {
        id: count

        anchors.right: parent.right
        anchors.rightMargin: Theme.gap
        anchors.verticalCenter: parent.verticalCenter
        active: entry.edits > 0
        sourceComponent: Rectangle {
            implicitWidth: Math.max(height, number.implicitWidth + 2 * Theme.gapTiny)
            implicitHeight: number.implicitHeight + Theme.gapTiny
            radius: height / 2
            color: Theme.accent

            BodyText {
                id: number

                objectName: "tabEdits"
                anchors.centerIn: parent
                text: entry.edits
                font.pixelSize: Theme.fontSmall
                Accessible.ignored: true
            }
        }
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
