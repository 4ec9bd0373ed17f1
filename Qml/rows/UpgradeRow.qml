import QtQuick 2.15
import Varkel.Shell 1.0
import "../assembly"

// The firmware upgrade of the sensors with table-driven pages.
Item {
    id: row

    property var entry: ["", 4, 0, 0, 0]
    readonly property string label: PlainText.line(entry[0])
    readonly property string valueText: area.fileName

    signal refused(string message)

    objectName: "row_" + entry[2] + "_" + entry[3] + "_" + entry[4]
    implicitHeight: area.implicitHeight + Theme.gapSmall

    UpgradeArea {
        id: area

        objectName: "upgradeArea"
        y: Theme.gapTiny
        width: parent.width
        upgrading: varkel_manager.IsUpgrading
        onFileChosen: varkel_manager.UpgradeLidar(file, row.entry[2], row.entry[3], row.entry[4])
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
