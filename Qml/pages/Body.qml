import QtQuick 2.15
import "../assembly"
import "../snapshots"

// What follows the window's first frame, but for the bar: the model's pages beside their list or the small
// sensors' page, and what goes on besides.
Item {
    id: body

    property Item view // main.qml's
    property alias connecting: watch.connecting

    // What does not fit about the model connected to; empty when all is well.
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
        readonly property bool wanted: !body.view.table

        anchors.fill: parent
        visible: wanted
        onWantedChanged: {
            if (wanted) {
                setSource("SmallSensorPage.qml", { "view": body.view });
            } else {
                source = "";
            }
        }
    }

    ModelCheck {
        id: modelCheck
    }

    ConnectionWatch {
        id: watch

        onLost: {
            body.view.printLog("The sensor does not answer any more, so the connection is closed.",
                               "WARNING");
            body.view.pressConnect();
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
        onChosen: body.view.choosePage(index)
        onSaveRequested: pages.saveShown()
        onReadRequested: body.view.readCurrentPage()
        onConnectRequested: body.view.pressConnectButton()
    }
}
