import QtQuick 2.15
import "../assembly"

// Shows how many faults the model's table has, and opens their list.
DefaultToolButton {
    id: button

    readonly property var lines: varkel_manager.findings.lines

    objectName: "findingsButton"
    visible: lines.length > 0
    text: lines.length === 1 ? "1 finding in this table" : lines.length + " findings in this table"
    hint: panel.visible ? "" : "Lists what is wrong with the model's table"
    onClicked: panel.opened ? panel.close() : panel.open()

    FindingsPanel {
        id: panel

        x: parent.width - width
        y: -height - Theme.gapSmall
        summary: varkel_manager.findings.summary
        lines: button.lines
    }
}
