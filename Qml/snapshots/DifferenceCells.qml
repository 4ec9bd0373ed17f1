import QtQuick 2.15
import "../assembly"

// The texts of a difference, or of the table's heading.
Row {
    id: cells

    property string page
    property string name
    property string leftText
    property string rightText
    property string outcome
    property color tone: Theme.text
    property color outcomeTone: tone
    readonly property real share: width / 20

    TableCell {
        width: 3 * cells.share
        height: parent.height
        color: Theme.textMuted
        value: cells.page
    }

    TableCell {
        width: 4.5 * cells.share
        height: parent.height
        color: cells.tone
        value: cells.name
    }

    TableCell {
        width: 4.25 * cells.share
        height: parent.height
        color: cells.tone
        value: cells.leftText
    }

    TableCell {
        width: 4.25 * cells.share
        height: parent.height
        color: cells.tone
        value: cells.rightText
    }

    TableCell {
        width: 4 * cells.share
        height: parent.height
        color: cells.outcomeTone
        value: cells.outcome
    }
}
