import QtQuick 2.15
import QtQuick.Templates 2.15 as T
import Varkel.Shell 1.0
import "../assembly"

// The details of the row that has the focus, or had it last.
Rectangle {
    id: pane

    property int module: 0
    property QtObject values: null // the roles of the row's list model; null before the first row
    readonly property bool filled: values !== null && values.kind >= 0
    property var lines: []

    signal hidden

    function refresh() {
        var isRow = values !== null && values.kind >= 0; // `filled` may not have followed yet
        lines = isRow ? varkel_manager.variableDetails(module, values.group, values.variable) : [];
    }

    objectName: "detailsPane"
    color: Theme.raised
    radius: Theme.radiusLarge
    border.color: Theme.hairline
    onValuesChanged: refresh()
    Component.onCompleted: refresh()

    Accessible.role: Accessible.Pane
    Accessible.name: "Details"

    BodyText {
        id: title

        objectName: "detailsTitle"
        x: Theme.gap
        y: Theme.gap
        width: hideButton.x - x - Theme.gapSmall
        height: hideButton.height
        font.pixelSize: Theme.fontHeading
        font.bold: true
        elide: Text.ElideRight
        text: pane.filled ? PlainText.line(pane.values.label) : "Details"
    }

    DefaultToolButton {
        id: hideButton

        objectName: "hideDetailsButton"
        anchors.right: parent.right
        anchors.rightMargin: Theme.gapSmall
        y: Theme.gap
        implicitWidth: Theme.buttonWidth - Theme.margin
        quiet: true
        text: "Hide"
        hint: "F1 shows the details again"
        onClicked: pane.hidden()
    }

    Flickable {
        id: flick

        anchors.top: title.bottom
        anchors.topMargin: Theme.gap
        anchors.bottom: parent.bottom
        anchors.bottomMargin: Theme.gap
        x: Theme.gap
        width: parent.width - 2 * Theme.gap
        contentHeight: column.height
        boundsBehavior: Flickable.StopAtBounds
        clip: true
        T.ScrollBar.vertical: DefaultScrollBar {}

        Column {
            id: column

            width: parent.width - Theme.gapSmall

            BodyText {
                width: parent.width
                visible: !pane.filled
                color: Theme.textMuted
                wrapMode: Text.Wrap
                text: "Click a row, or move to it with Tab, to see its details."
            }

            Repeater {
                model: pane.lines.length

                DetailLine {
                    objectName: "detail_" + caption
                    width: column.width
                    caption: (pane.lines[index] || ({})).caption || ""
                    text: (pane.lines[index] || ({})).text || ""
                }
            }

            DetailLine {
                width: column.width
                caption: "Check"
                text: pane.filled ? pane.values.verdict : ""
            }

            Plot {
                width: column.width
                varId: pane.filled ? pane.values.varId : ""
                live: pane.filled && pane.values.live
            }
        }
    }

    Connections {
        target: pane.values ? varkel_manager.pageModel(pane.module) : null

        function onDataChanged() {
            pane.refresh();
        }
    }
}
