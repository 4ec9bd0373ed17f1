import QtQuick 2.15
import QtQuick.Templates 2.15 as T
import "../assembly"

// The sensor's snapshots, one of which is selected. Up and Down move between them.
Item {
    id: table

    property QtObject snapshots // varkel_manager.snapshots
    readonly property int chosen: list.currentIndex

    SnapshotRow {
        id: heading

        width: parent.width
        heading: true
        time: "Time"
        reason: "Reason"
        file: "File"
    }

    ListView {
        id: list

        objectName: "snapshotList"
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: heading.bottom
        anchors.bottom: parent.bottom
        activeFocusOnTab: true
        keyNavigationEnabled: true
        highlightFollowsCurrentItem: true
        highlightMoveDuration: 0
        boundsBehavior: Flickable.StopAtBounds
        clip: true
        currentIndex: 0
        model: table.snapshots.list
        T.ScrollBar.vertical: DefaultScrollBar {}

        Accessible.role: Accessible.List
        Accessible.name: "Snapshots of this sensor"

        onCountChanged: currentIndex = Math.max(0, Math.min(currentIndex, count - 1))

        delegate: SnapshotRow {
            objectName: "snapshotRow_" + index
            width: list.width
            time: model.time
            reason: model.reason
            file: model.file
            chosen: ListView.isCurrentItem
            focused: chosen && list.activeFocus
            onClicked: {
                list.currentIndex = index;
                list.forceActiveFocus(Qt.MouseFocusReason);
            }
        }
    }
}
