import QtQuick 2.15
import "../assembly"
import "../snapshots"

// The sensor's snapshots above, the differences between two states below.
Item {
    id: page

    readonly property QtObject snapshots: varkel_manager.snapshots
    readonly property bool connected: varkel_manager.IsConnected

    signal applyAsked(string text)

    objectName: "snapshotsPage"

    Accessible.role: Accessible.Pane
    Accessible.name: "Snapshots"

    onVisibleChanged: {
        if (visible) {
            snapshots.refresh();
        }
    }
    onConnectedChanged: {
        if (visible) {
            snapshots.refresh();
        }
    }
    Component.onCompleted: snapshots.refresh()

    SnapshotBar {
        id: bar

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.margins: Theme.margin
        snapshots: page.snapshots
        connected: page.connected
        chosen: table.chosen
    }

    SnapshotTable {
        id: table

        anchors.left: bar.left
        anchors.right: bar.right
        anchors.top: bar.bottom
        anchors.topMargin: Theme.gap
        height: Math.min(Theme.snapshotTableHeight, page.height / 3) // leaves room for the differences on a small screen
        snapshots: page.snapshots
    }

    DifferenceBar {
        id: differenceBar

        anchors.left: bar.left
        anchors.right: bar.right
        anchors.top: table.bottom
        anchors.topMargin: Theme.gapLarge
        visible: differences.compared
        snapshots: page.snapshots
    }

    DifferenceTable {
        id: differences

        anchors.left: bar.left
        anchors.right: bar.right
        anchors.top: differenceBar.bottom
        anchors.topMargin: Theme.gapSmall
        anchors.bottom: footer.top
        snapshots: page.snapshots
    }

    ApplyFooter {
        id: footer

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        snapshots: page.snapshots
        connected: page.connected
    }

    Connections {
        target: page.snapshots

        function onPlanned(text) {
            page.applyAsked(text);
        }
    }
}
