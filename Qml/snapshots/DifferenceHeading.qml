import QtQuick 2.15
import "../assembly"

// The heading of the differences; its box selects everything that can be applied.
Rectangle {
    id: heading

    property QtObject snapshots // varkel_manager.snapshots
    readonly property QtObject differences: snapshots.differences

    implicitHeight: Theme.rowHeight
    color: Theme.bar

    CheckMark {
        id: box

        readonly property bool all: heading.differences.selectable > 0
                                    && heading.differences.selected === heading.differences.selectable

        objectName: "selectAllBox"
        anchors.verticalCenter: parent.verticalCenter
        text: "Select everything that can be applied"
        hint: text
        enabled: heading.differences.selectable > 0 && !heading.snapshots.busy
        tristate: true
        checkState: all ? Qt.Checked : heading.differences.selected > 0 ? Qt.PartiallyChecked : Qt.Unchecked
        nextCheckState: () => {
            heading.differences.selectAll(!all);
            return all ? Qt.Checked : Qt.Unchecked;
        }
    }

    DifferenceCells {
        anchors.left: box.right
        anchors.right: parent.right
        height: parent.height
        tone: Theme.textMuted
        page: "Page"
        name: "Name"
        leftText: heading.snapshots.leftTitle
        rightText: heading.snapshots.rightTitle
    }
}
