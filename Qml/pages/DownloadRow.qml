import QtQuick 2.15
import QtQuick.Layouts 1.15
import "../assembly"

// A log of the sensor with its download button.
LabelledRow {
    id: row

    property bool downloading: false

    signal requested

    DefaultToolButton {
        objectName: "downloadButton"
        text: "Download"
        enabled: varkel_manager.IsConnected && !varkel_manager.IsDownloadLog && !varkel_manager.IsUpgrading
                 && !varkel_manager.snapshots.applying
        hint: varkel_manager.IsConnected ? "Asks first where to put it" : "Connect first"
        onClicked: row.requested()
    }

    BodyText {
        visible: row.downloading
        color: Theme.textMuted
        text: "Downloading…"
    }

    Item {
        Layout.fillWidth: true
    }
}
