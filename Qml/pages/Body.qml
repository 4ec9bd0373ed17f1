import QtQuick 2.15

// What fills the window below its bar: the model's pages beside their list, or the small sensors' page.
Item {
    id: body

    property Item view // main.qml's

    // The page of this module, null while it has not been shown yet.
    function pageOf(module) {
        return pages.pageOf(module);
    }

    ModelPages {
        id: pages

        objectName: "pages"
        anchors.fill: parent
        visible: body.view.table
        titles: body.view.pageTitles
        lists: body.view.pageLists
        currentIndex: body.view.currentPage
        onCancelRequested: {
            varkel_manager.ClearSetMap();
            varkel_manager.ReadPageInBackground(module);
        }
        onSaveRequested: body.view.requestSave(module)
        onRefused: body.view.callErrorInfoWindow(message)
        onLogRequested: body.view.openLog()
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

    PageShortcuts {
        onChosen: body.view.choosePage(index)
    }
}
