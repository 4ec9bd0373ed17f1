import QtQuick 2.15
import QtQuick.Layouts 1.15
import "../assembly"
import "../details"

// The pages of the selected model, then the log, command and snapshots pages.
Item {
    id: pages

    property var titles: []
    property int currentIndex: 0
    property bool saving: false
    readonly property int logIndex: titles.length
    readonly property int commandIndex: titles.length + 1
    readonly property Item currentPage: modelPages.count > currentIndex && modelPages.itemAt(currentIndex)
                                        ? modelPages.itemAt(currentIndex).item : null
    property bool detailsWanted: true
    readonly property bool detailsFit: details.width >= Theme.detailsLeastWidth
    readonly property int snapshotsIndex: titles.length + 2

    signal cancelRequested(int module)
    signal saveRequested(int module)
    signal refused(string message)
    signal upgradeRequested(url file, var start)
    signal logRequested
    signal applyAsked(string text)

    // Same as the page's Save button, if it has one that is enabled.
    function saveShown() {
        if (currentPage && currentPage.savable) {
            saveRequested(currentIndex);
        }
    }

    // On the page that is shown.
    function enterRow(row) {
        var loader = modelPages.itemAt(currentIndex);
        if (loader && loader.item) {
            loader.item.enterRow(row);
        }
    }

    Repeater {
        id: modelPages

        model: pages.titles

        PageLoader {
            id: loader

            readonly property int module: index

            current: index === pages.currentIndex
            sourceComponent: ModelPage {
                module: loader.module
                title: pages.titles[loader.module] || ""
                rows: varkel_manager.pageModel(loader.module)
                saving: pages.saving
                onCancelRequested: pages.cancelRequested(loader.module)
                onSaveRequested: pages.saveRequested(loader.module)
                onRefused: pages.refused(message)
                onUpgradeRequested: pages.upgradeRequested(file, start)
            }
        }
    }

    PageLoader {
        id: logPage

        current: pages.currentIndex === pages.logIndex
        source: "LogPage.qml"
    }

    Connections {
        target: logPage.item

        function onLogRequested() {
            pages.logRequested();
        }
    }

    PageLoader {
        current: pages.currentIndex === pages.commandIndex
        source: "CommandPage.qml"
    }

    PageLoader {
        id: snapshotsPage

        current: pages.currentIndex === pages.snapshotsIndex
        source: "SnapshotsPage.qml"
    }

    Connections {
        target: snapshotsPage.item

        function onApplyAsked(text) {
            pages.applyAsked(text);
        }
    }

    Loader {
        id: details

        readonly property real picture: pages.currentPage && pages.currentPage.hasPicture
                                        ? Theme.tallRowHeight + Theme.gap : 0
        readonly property real leftEdge: 2 * Theme.margin + pages.width * Theme.rowShare + picture

        anchors.right: parent.right
        anchors.rightMargin: Theme.margin
        y: Theme.margin + (pages.currentPage ? pages.currentPage.stripHeight : 0)
        width: parent.width - leftEdge - Theme.margin
        height: parent.height - y - Theme.footerHeight - Theme.gap
        active: pages.detailsWanted && pages.detailsFit
        visible: pages.currentPage !== null
        sourceComponent: DetailsPane {
            module: pages.currentIndex
            values: pages.currentPage ? pages.currentPage.focused : null
            onHidden: pages.detailsWanted = false
        }
    }

    DetailsButton {
        anchors.right: parent.right
        anchors.rightMargin: Theme.margin
        y: details.y - Theme.gapSmall
        visible: !pages.detailsWanted && pages.detailsFit && pages.currentPage !== null
        onClicked: pages.detailsWanted = true
    }

    Shortcut {
        sequence: "F1"
        onActivated: pages.detailsWanted = !pages.detailsWanted
    }
}
