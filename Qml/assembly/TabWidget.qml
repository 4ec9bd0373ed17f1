import QtQuick 2.15
import QtQuick.Templates 2.15 as T
import Varkel.Shell 1.0
import "."

// The list of pages at the window's side. Up and Down move along it.
Rectangle {
    id: tabs

    property var titles: []
    property int currentIndex: 0

    signal chosen(int index)

    color: Theme.bar

    Accessible.role: Accessible.PageTabList
    Accessible.name: "Pages"

    Flickable {
        id: flick

        anchors.fill: parent
        anchors.topMargin: Theme.gap
        contentHeight: column.height
        boundsBehavior: Flickable.StopAtBounds
        clip: true
        T.ScrollBar.vertical: DefaultScrollBar {}

        Column {
            id: column

            width: parent.width

            Repeater {
                model: tabs.titles

                TabEntry {
                    objectName: "tab_" + index
                    width: column.width
                    text: PlainText.line(modelData)
                    shortcutText: index < 9 ? "Ctrl+" + (index + 1) : ""
                    current: index === tabs.currentIndex
                    onClicked: tabs.chosen(index)
                    Keys.onUpPressed: tabs.step(index - 1)
                    Keys.onDownPressed: tabs.step(index + 1)
                }
            }
        }
    }

    Rectangle {
        anchors.right: parent.right
        width: Theme.line
        height: parent.height
        color: Theme.hairline
    }

    function step(index) {
        if (index >= 0 && index < titles.length) {
            chosen(index);
            column.children[index].forceActiveFocus(Qt.TabFocusReason);
        }
    }
}
