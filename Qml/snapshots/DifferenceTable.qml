import QtQuick 2.15
import QtQuick.Templates 2.15 as T
import "../assembly"

// The differences. Up and Down move between rows, Space selects one to be applied.
Item {
    id: table

    property QtObject snapshots // varkel_manager.snapshots
    readonly property bool compared: snapshots.leftTitle.length > 0

    DifferenceHeading {
        id: heading

        width: parent.width
        visible: table.compared
        snapshots: table.snapshots
    }

    ListView {
        id: list

        objectName: "differenceList"
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: heading.bottom
        anchors.bottom: parent.bottom
        visible: table.compared
        activeFocusOnTab: true
        keyNavigationEnabled: true
        highlightMoveDuration: 0
        boundsBehavior: Flickable.StopAtBounds
        clip: true
        model: table.snapshots.differences
        T.ScrollBar.vertical: DefaultScrollBar {}

        Accessible.role: Accessible.Table
        Accessible.name: "Differences"

        onActiveFocusChanged: currentIndex = Math.max(currentIndex, 0)
        Keys.onSpacePressed: {
            if (currentItem && !table.snapshots.busy) {
                table.snapshots.differences.select(currentIndex, !currentItem.values.selected);
            }
        }

        delegate: DifferenceRow {
            objectName: "differenceRow_" + index
            width: list.width
            values: model
            resting: table.snapshots.busy
            focused: ListView.isCurrentItem && list.activeFocus
            onToggled: table.snapshots.differences.select(index, on)
            onClicked: {
                list.currentIndex = index;
                list.forceActiveFocus(Qt.MouseFocusReason);
            }
        }
    }

    BodyText {
        anchors.centerIn: parent
        visible: list.count === 0 && !table.snapshots.busy
        color: Theme.textFaint
        text: !table.compared ? "Choose a row above and what to compare it with, or drop a snapshot on the window"
                              : table.snapshots.differences.total === 0 ? "No differences"
                                                                        : "None of the differences can be set"
    }
}
