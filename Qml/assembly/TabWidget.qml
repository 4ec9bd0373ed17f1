import QtQuick 2.15
import Varkel.Shell 1.0
import "."

// The list of pages at the side of the window. It is one tab stop; Up, Down, Home and End move within it.
Rectangle {
    id: tabs

    property var titles: []
    property var edits: [] // number of unsaved changes on each page
    property int currentIndex: 0
    property string entryName: "tab_" // followed by the entry's number

    signal chosen(int index)

    color: Theme.bar
    onCurrentIndexChanged: {
        if (column.activeFocusIndex() >= 0) {
            takeFocus();
        }
    }

    Accessible.role: Accessible.PageTabList
    Accessible.name: "Pages"

    Flickable {
        id: flick

        anchors.fill: parent
        anchors.topMargin: Theme.gap
        contentHeight: column.height
        boundsBehavior: Flickable.StopAtBounds
        clip: true

        readonly property bool overflows: contentHeight > height && height > 0

        onOverflowsChanged: {
            if (overflows) {
                scrollBar.setSource("ViewScrollBar.qml", { "view": flick });
            }
        }

        Column {
            id: column

            function activeFocusIndex() {
                return Array.prototype.findIndex.call(children, entry => entry.activeFocus);
            }

            width: parent.width

            Repeater {
                model: tabs.titles

                TabEntry {
                    objectName: tabs.entryName + index
                    width: column.width
                    text: PlainText.line(modelData)
                    shortcutText: index < 10 ? "Ctrl+" + (index + 1) % 10 : ""
                    current: index === tabs.currentIndex
                    edits: tabs.edits[index] || 0
                    onClicked: tabs.chosen(index)
                    Keys.onUpPressed: tabs.step(index - 1)
                    Keys.onDownPressed: tabs.step(index + 1)
                    Keys.onPressed: {
                        if (event.key === Qt.Key_Home || event.key === Qt.Key_End) {
                            tabs.step(event.key === Qt.Key_Home ? 0 : tabs.titles.length - 1);
                            event.accepted = true;
                        }
                    }
                }
            }
        }
    }

    Loader {
        id: scrollBar

        asynchronous: true // the window's first frame does not wait for it
        anchors.right: parent.right
        anchors.top: flick.top
        anchors.bottom: flick.bottom
    }

    Rectangle {
        anchors.right: parent.right
        width: Theme.line
        height: parent.height
        color: Theme.hairline
    }

    function takeFocus() {
        column.children[currentIndex].forceActiveFocus(Qt.OtherFocusReason);
    }

    function step(index) {
        if (index >= 0 && index < titles.length) {
            chosen(index);
            column.children[index].forceActiveFocus(Qt.TabFocusReason);
        }
    }
}
