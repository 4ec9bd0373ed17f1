import QtQuick 2.15

// Accepts a snapshot dropped on the window; other files go to the items below.
DropArea {
    id: area

    signal offered(url file)

    function isSnapshot(drag) {
        return drag.hasUrls && drag.urls.length === 1 && drag.urls[0].toString().endsWith(".json");
    }

    objectName: "snapshotDrop"
    onEntered: drag.accepted = isSnapshot(drag)
    onDropped: {
        if (isSnapshot(drop)) {
            drop.acceptProposedAction();
            offered(drop.urls[0]);
        }
    }
}
