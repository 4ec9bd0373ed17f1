import QtQuick 2.15
import Varkel.Shell 1.0
import "../assembly"

// The firmware upgrade of the sensors with table-driven pages.
Item {
    id: row

    property int module: 0
    property QtObject values // the roles of the page's list model
    readonly property string label: PlainText.line(values.label)
    readonly property string valueText: area.fileName

    signal refused(string message)
    signal upgradeRequested(url file, var start) // asks before `start`

    objectName: "row_" + module + "_" + values.group + "_" + values.variable
    implicitHeight: area.implicitHeight + Theme.gapSmall

    UpgradeArea {
        id: area

        objectName: "upgradeArea"
        y: Theme.gapTiny
        width: parent.width
        upgrading: varkel_manager.IsUpgrading
        after: varkel_manager.sensorReturn.text
        blocked: !varkel_manager.IsConnected ? "Connect to the sensor first"
                 : varkel_manager.IsDownloadLog ? "A log is being downloaded"
                 : varkel_manager.snapshots.applying ? "A snapshot is being applied" : ""
        onFileChosen: row.upgradeRequested(file, () => {
            area.take(file);
            varkel_manager.UpgradeLidar(file, row.module, row.values.group, row.values.variable);
        })
        onFileBlocked: row.refused("The upgrade can't start. " + area.blocked + ", then choose the package again.")
        onFileRefused: row.refused("Upgrade package rejected: it has to be a .patch file")
    }

    function follow() {
        var total = Math.max(1, varkel_manager.upgradeProgressTotalLen);
        area.ratio = Math.min(1, varkel_manager.upgradeProgress / total);
    }

    Timer {
        interval: Theme.progressInterval
        running: varkel_manager.IsUpgrading
        repeat: true
        onTriggered: row.follow()
    }

    Connections {
        target: varkel_manager

        function onIsUpgradingChanged() {
            row.follow();
        }
    }
}
