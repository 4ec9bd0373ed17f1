import QtQuick 2.15
import QtQuick.Layouts 1.15
import "../assembly"

// The pages of the selected model, then the log page and the command page.
Item {
    id: pages

    property var titles: []
    property int currentIndex: 0
    property bool saving: false
    readonly property int logIndex: titles.length
    readonly property int commandIndex: titles.length + 1

    signal cancelRequested(int module)
    signal saveRequested(int module)
    signal refused(string message)
    signal upgradeRequested(url file, var start)
    signal logRequested

    Repeater {
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
}
