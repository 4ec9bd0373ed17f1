import QtQuick 2.15
import QtQuick.Layouts 1.15
import "../assembly"

// One of the sensor's logs, with its download button.
LabelledRow {
    id: row

    property bool downloading: false

    signal requested

    DefaultToolButton {
        objectName: "downloadButton"
        text: "Download"
        enabled: varkel_manager.IsConnected && !varkel_manager.IsDownloadLog && !varkel_manager.IsUpgrading
                 && !varkel_manager.snapshots.applying
        hint: "Asks where to save it"
        onClicked: row.requested()
    }

    BodyText {
        objectName: "downloadState"
        visible: text.length > 0
        color: Theme.textMuted
        text: row.downloading ? "Downloading…" : !varkel_manager.IsConnected ? "Connect first"
              : varkel_manager.IsDownloadLog ? "Another log is being downloaded"
                                             : varkel_manager.IsUpgrading ? "An upgrade is running"
              : varkel_manager.snapshots.applying ? "A snapshot is being applied" : ""
    }

    Item {
        Layout.fillWidth: true
    }
}
