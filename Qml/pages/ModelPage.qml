import QtQuick 2.15
import QtQuick.Templates 2.15 as T
import "../assembly"

// One page of the model's table: a row per entry of its list and, below, Cancel and Save.
Item {
    id: page

    property int module: 0
    property string title
    property var entries: []
    property bool connected: false
    property bool saving: false
    property var outOfRangeNames: []
    property bool stale: false
    readonly property alias edits: footer.edits
    readonly property bool hasUpgrade: entries.some(function (entry) {
        return entry[1] === 4;
    })

    signal cancelRequested
    signal saveRequested
    signal refused(string message)

    function rowFile(kind, variable) {
        if (kind === 0) {
            return "../rows/" + (variable < 0 ? "HeadingRow" : "TextPairRow") + ".qml";
        }
        var names = ["", "TextRow", "SwitchRow", "ComboRow", "UpgradeRow", "FovRow"];
        return "../rows/" + (names[kind] || "TextPairRow") + ".qml";
    }

    function eachRow(action) {
        for (var i = 0; i < rows.count; ++i) {
            var row = rows.itemAt(i) ? rows.itemAt(i).item : null;
            if (row && row.refresh) {
                action(row);
            }
        }
    }

    // Rows of a hidden page wait with their refresh until it is shown.
    function refresh() {
        stale = !visible;
        if (!visible) {
            return;
        }
        eachRow(function (row) {
            row.refresh();
            row.outOfRange = row.outOfRange && row.edited;
        });
        countEdits();
    }

    function refreshLive() {
        if (!visible) {
            stale = true;
            return;
        }
        eachRow(function (row) {
            if (row.live) {
                row.refreshIfChanged();
            }
        });
    }

    function countEdits() {
        var count = 0;
        eachRow(function (row) {
            count += row.edited ? 1 : 0;
        });
        footer.edits = count;
    }

    function markOutOfRange(name) {
        outOfRangeNames = outOfRangeNames.concat([name]);
        eachRow(function (row) {
            if (row.values.var_name === name) {
                row.outOfRange = true;
            }
        });
    }

    objectName: "page_" + module

    Accessible.role: Accessible.Pane
    Accessible.name: title

    onVisibleChanged: {
        if (visible && stale) {
            refresh();
        }
    }

    Flickable {
        id: flick

        objectName: "flick"
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.bottom: footer.visible ? footer.top : parent.bottom
        contentHeight: column.height + 2 * Theme.margin
        boundsBehavior: Flickable.StopAtBounds
        clip: true
        T.ScrollBar.vertical: DefaultScrollBar {}

        Column {
            id: column

            x: Theme.margin
            y: Theme.margin - Theme.gapSmall
            width: flick.width * Theme.rowShare

            Repeater {
                id: rows

                model: page.entries

                Loader {
                    width: column.width
                    onLoaded: {
                        if (item.refused) {
                            item.refused.connect(page.refused);
                        }
                        if (item.editedChanged) {
                            item.editedChanged.connect(page.countEdits);
                        }
                    }
                    Component.onCompleted: setSource(page.rowFile(modelData[1], modelData[4]),
                                                     { "entry": modelData })
                }
            }
        }
    }

    PageFooter {
        id: footer

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        module: page.module
        saving: page.saving
        visible: !page.hasUpgrade
        onCancelled: page.cancelRequested()
        onSaved: page.saveRequested()
    }

    Connections {
        target: varkel_manager

        function onMyMapChanged() {
            page.refresh();
        }

        function onMyTimerMapChanged() {
            page.refreshLive();
        }
    }

    FocusFollower {
        view: flick
        enabled: page.visible
    }
}
