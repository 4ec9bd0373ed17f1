import QtQuick 2.15
import QtQuick.Layouts 1.15
import "../assembly"

// The sensor's firmware: its versions, the part to upgrade, and the transfer of a package.
Section {
    id: section

    property string selectedModel
    readonly property bool marvo: selectedModel === "Marvo-KTC"
    readonly property bool junctionBox: marvo && mode.currentIndex === 1
    readonly property int junctionBoxMode: 2

    signal refused(string message)
    signal upgradeRequested(url file, string mode, var start) // asks before `start`

    // The controller keeps a mode until it gets another, so it is also given the one shown initially.
    function chooseMode() {
        varkel_manager.ZeltoSetUpgradeMode(junctionBox ? junctionBoxMode : mode.currentIndex);
    }

    function upgrade(file) {
        if (marvo && !junctionBox) {
            varkel_manager.MarvoUpgradeLidar(file);
        } else {
            varkel_manager.ZeltoUpgradeLidar(file);
        }
    }

    function follow() {
        var total = Math.max(1, varkel_manager.upgradeProgressTotalLen);
        area.ratio = Math.min(1, varkel_manager.upgradeProgress / total);
    }

    title: "Upgrade"

    InfoTable {
        width: section.width
        fieldName: "zeltoVersion"
        entries: varkel_manager.ZeltoLidarVersionInfo
    }

    UpgradeArea {
        id: area

        objectName: "zeltoUpgrade"
        width: section.width
        endings: [".bin", ".patch"]
        quietWhenIdle: true
        upgrading: varkel_manager.IsUpgrading
        blocked: varkel_manager.IsConnected ? "" : "Connect to the sensor first"
        onFileChosen: section.upgradeRequested(file, mode.currentText, () => {
            area.take(file);
            section.upgrade(file);
        })
        onFileBlocked: section.refused("The upgrade can't start. " + area.blocked + ", then choose the package again.")
        onFileRefused: {
            console.log("Rejected, need a *.bin or *.patch file");
            remark = "Rejected, need a *.bin or *.patch file";
        }

        LabelledRow {
            width: area.width
            text: "Upgrade Mode"

            DefaultComboBox {
                id: mode

                objectName: "zeltoUpgradeMode"
                Layout.fillWidth: true
                Accessible.name: "Upgrade Mode"
                enabled: !varkel_manager.IsUpgrading
                model: section.marvo ? ["Lidar", "Junction Box"] : ["APP+FPGA", "PBL"]
                onActivated: section.chooseMode()
                onModelChanged: {
                    currentIndex = 0;
                    section.chooseMode();
                }
            }
        }
    }

    Timer {
        interval: Theme.progressInterval
        running: varkel_manager.IsUpgrading
        repeat: true
        onTriggered: section.follow()
    }

    Connections {
        target: varkel_manager

        function onIsUpgradingChanged() {
            section.follow();
        }
    }
}
