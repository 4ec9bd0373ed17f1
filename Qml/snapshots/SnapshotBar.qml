import QtQuick 2.15
import QtQuick.Layouts 1.15
import "../assembly"

// The actions for the list of snapshots.
RowLayout {
    id: bar

    property QtObject snapshots // varkel_manager.snapshots
    property bool connected: false
    property int chosen: 0
    property bool saving: false // whether the dialog is for a file to write

    function askForFile(toWrite) {
        saving = toWrite;
        question.ask({
            "title": toWrite ? "Save a snapshot of the sensor" : "Choose the snapshot to compare with",
            "selectExisting": !toWrite,
            "folder": snapshots.folder(),
            "suggestedName": toWrite ? snapshots.proposedName() : "",
            "defaultSuffix": "json",
            "nameFilters": ["Snapshots (*.json)", "All files (*)"]
        });
    }

    spacing: Theme.gapSmall

    DefaultToolButton {
        objectName: "saveSnapshotButton"
        text: "Save snapshot…"
        enabled: bar.connected && !bar.snapshots.busy
        hint: bar.connected ? "Reads everything from the sensor and saves it to a file" : "Connect first"
        onClicked: bar.askForFile(true)
    }

    DefaultToolButton {
        id: compareButton

        objectName: "compareButton"
        text: "Compare with…"
        rightPadding: arrow.width + 2 * Theme.gapSmall
        enabled: !bar.snapshots.busy
        hint: menu.visible ? "" : "Compares the row selected below"
        onClicked: menu.open()

        DownArrow {
            id: arrow

            x: compareButton.width - width - Theme.gapSmall
            y: (compareButton.height - height) / 2
        }

        CompareMenu {
            id: menu

            sensorChosen: bar.chosen === 0
            connected: bar.connected
            onSensorWanted: bar.snapshots.compare(bar.chosen, 0)
            onFileWanted: bar.askForFile(false)
            onDefaultsWanted: bar.snapshots.compare(bar.chosen, 2)
        }
    }

    BodyText {
        Layout.fillWidth: true
        Layout.leftMargin: Theme.gapSmall
        color: Theme.textMuted
        elide: Text.ElideRight
        text: bar.connected ? "A snapshot file can also be dropped on the window."
                            : "Connect to see the sensor's snapshots; files can also be compared without a connection."
    }

    FileQuestion {
        id: question

        onChosen: bar.saving ? bar.snapshots.save(file) : bar.snapshots.compare(bar.chosen, 1, file)
    }
}
