import QtQuick 2.15
import QtQuick.Templates 2.15 as T
import "../assembly"

// One page of the model's table: the rows of its list model and, below, Cancel and Save. Rows are created when they
// come near the visible area.
Item {
    id: page

    property int module: 0
    property string title
    property QtObject rows // varkel_manager.pageModel(module)
    property bool saving: false
    property real rowsEnd: width // where the scroll bar is

    readonly property QtObject focused: list.currentItem ? list.currentItem.values : null // the row's roles

    readonly property real stripHeight: strip.height
    readonly property bool savable: footer.visible && !saving
    readonly property bool hasPicture: (varkel_manager.level2List[module] || []).some(row => row[1] === 5)

    signal cancelRequested
    signal saveRequested
    signal refused(string message)
    signal upgradeRequested(url file, var start)

    // Moves the focus into a row, anywhere in the list; if it is there already, it stays where it is.
    function enterRow(row) {
        list.forceLayout();
        if (!steps.inside || list.currentIndex !== row) {
            steps.enter(row, true);
        }
    }

    objectName: "page_" + module

    Accessible.role: Accessible.Pane
    Accessible.name: title

    Component.onDestruction: list.model = null // abandons rows that are still being created

    Loader {
        id: strip

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        height: active ? implicitHeight : 0
        active: !varkel_manager.IsConnected
        sourceComponent: StaleStrip {
            objectName: "staleStrip_" + page.module
            rows: page.rows
        }
    }

    TabSteps {
        id: steps

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: strip.bottom
        anchors.bottom: footer.visible ? footer.top : parent.bottom
        list: list

        ListView {
            id: list

            function turnPage(pages) {
                var top = originY - topMargin;
                var bottom = originY + contentHeight + bottomMargin - height;
                contentY = Math.max(top, Math.min(bottom, contentY + pages * (height - Theme.rowHeight)));
            }

            objectName: "rows_" + page.module
            anchors.fill: parent
            topMargin: Theme.margin - Theme.gapSmall
            bottomMargin: Theme.margin
            // The upgrade row shows the chosen package, so it is kept.
            cacheBuffer: page.rows && page.rows.upgrades ? Theme.wholePage : Math.max(0, height)
            boundsBehavior: Flickable.StopAtBounds
            keyNavigationEnabled: false
            highlightFollowsCurrentItem: false
            currentIndex: -1
            clip: true
            model: page.rows
            T.ScrollBar.vertical: DefaultScrollBar {
                parent: steps
                x: page.rowsEnd - width
                height: steps.height
            }

            Keys.onPressed: {
                if (event.key === Qt.Key_PageUp || event.key === Qt.Key_PageDown) {
                    turnPage(event.key === Qt.Key_PageUp ? -1 : 1);
                    event.accepted = true;
                }
            }

            delegate: ModelRow {
                x: Theme.margin
                width: list.width * Theme.rowShare
                module: page.module
                number: index
                values: model
                onRefused: page.refused(message)
                onUpgradeRequested: page.upgradeRequested(file, start)
            }
        }
    }

    PageFooter {
        id: footer

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        module: page.module
        edits: page.rows ? page.rows.edits : 0
        saving: page.saving
        visible: !page.rows || !page.rows.upgrades
        onCancelled: page.cancelRequested()
        onSaved: page.saveRequested()
    }

    FocusFollower {
        view: list
        enabled: page.visible
    }
}
