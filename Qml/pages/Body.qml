import QtQuick 2.15
import "../assembly"
import "../snapshots"

// Everything created after the window's first frame, except the bar's fields: the model's pages or the small sensors'
// page, the status line and the connection watch.
Item {
    id: body

    property Item view // main.qml's
    property alias connecting: watch.connecting

    // How the connected sensor does not match the selected model; empty if it does.
    function sensorName() {
        return status.sensor;
    }

    function modelWarning() {
        return modelCheck.warning(varkel_manager.getLidarPN(), varkel_manager.getLidarSN(), view.model);
    }

    LoadingWidget {
        objectName: "loadingBar"
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.top
        running: watch.connecting || varkel_manager.isReadingPage || varkel_manager.isWorking
    }

    ModelPages {
        id: pages

        objectName: "pages"
        anchors.fill: parent
        anchors.leftMargin: Theme.sideBarWidth
        anchors.bottomMargin: status.height
        visible: body.view.table
        titles: body.view.pageTitles
        currentIndex: body.view.currentPage
        saving: body.view.saving
        onCancelRequested: {
            varkel_manager.ClearSetMap();
            varkel_manager.ReadPageInBackground(module);
        }
        onSaveRequested: body.view.requestSave(module)
        onRefused: body.view.callErrorInfoWindow(message)
        onUpgradeRequested: body.view.confirmUpgrade(file, "", varkel_manager.installedVersions(), start)
        onLogRequested: body.view.openLog()
        onApplyAsked: body.view.notice("MessageWindow").notify(text, "Apply", () => varkel_manager.snapshots.apply(),
                                                               "Apply to the sensor?")
    }

    SnapshotDrop {
        parent: body.view
        anchors.fill: parent
        enabled: body.view.table
        onOffered: {
            body.view.choosePage(pages.snapshotsIndex);
            varkel_manager.snapshots.compareFile(file);
        }
    }

    Loader {
        id: smallSensor

        readonly property bool wanted: !body.view.table

        anchors.fill: parent
        anchors.bottomMargin: status.height
        visible: wanted
        onWantedChanged: {
            if (wanted) {
                setSource("SmallSensorPage.qml", { "view": body.view });
            } else {
                source = "";
            }
        }
    }

    StatusLine {
        id: status

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        model: body.view.model
        titles: body.view.pageTitles
        connecting: watch.connecting
        saving: body.view.saving
        outcome: body.view.lastOutcome
        outcomeColor: body.view.lastOutcomeType === "ERROR" ? Theme.error
                      : body.view.lastOutcomeType === "WARNING" ? Theme.warning : Theme.textMuted
        onPageRequested: body.view.choosePage(page)
        onLogRequested: body.view.openLog()
    }

    ModelCheck {
        id: modelCheck
    }

    ConnectionWatch {
        id: watch

        onLost: {
            var sensor = status.sensor;
            body.view.disconnect();
            body.view.record("The sensor at " + sensor + " no longer answers, so the connection was closed.",
                             "WARNING");
        }
    }

    Connections {
        target: varkel_manager.sensorReturn

        function onEnded(text, back) {
            body.view.showUpgradeOutcome(text, back);
        }
    }

    Connections {
        target: varkel_manager.edits

        function onStepped(page, row) {
            if (page !== body.view.currentPage) {
                body.view.choosePage(page);
            }
            pages.enterRow(row);
        }
    }

    FocusKeeper {
        view: body.view
        onLost: body.view.takeFocus()
    }

    Search {
        onChosen: {
            body.view.choosePage(page);
            pages.enterRow(row);
        }
    }

    PageShortcuts {
        onChosen: smallSensor.item ? smallSensor.item.showSection(index) : body.view.choosePage(index)
        onSaveRequested: pages.saveShown()
        onReadRequested: body.view.readCurrentPage()
        onConnectRequested: body.view.pressConnectButton()
    }
}
