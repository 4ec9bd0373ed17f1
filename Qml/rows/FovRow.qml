import QtQuick 2.15
import "../assembly"

// The field-of-view editor: the option, five start and five end angles, and a picture of the sectors.
RowFrame {
    id: row

    readonly property var angles: values.angles
    readonly property string shownText: choice.chosenLabel

    implicitHeight: Theme.tallRowHeight
    noteInCaption: true

    OptionChoice {
        id: choice

        parent: row
        y: Theme.rowHeight + Theme.gapTiny
        width: row.width * Theme.labelShare - Theme.margin
        height: Theme.controlHeight
        row: row
    }

    FovBoxes {
        id: boxes

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        place: row.place
        angles: row.angles
        editable: row.writable
        dimmed: row.dimmed
        onUndone: varkel_manager.edits.undo()
        onRedone: varkel_manager.edits.redo()
        onAngleCommitted: varkel_manager.SetMultiFovConfig(index, text)
    }

    FovPicture {
        parent: row
        x: row.width + Theme.margin
        objectName: "fovPicture"
        angles: row.angles
    }
}
