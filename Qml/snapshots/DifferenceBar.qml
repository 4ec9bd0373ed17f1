import QtQuick 2.15
import QtQuick.Layouts 1.15
import Varkel.Shell 1.0
import "../assembly"

// What is compared, the number of differences, and which of them are shown.
RowLayout {
    id: bar

    property QtObject snapshots // varkel_manager.snapshots
    readonly property QtObject differences: snapshots.differences

    spacing: Theme.gap

    BodyText {
        objectName: "differenceCount"
        font.bold: true
        text: bar.differences.total === 1 ? "1 difference" : bar.differences.total + " differences"
    }

    BodyText {
        objectName: "compareRemark"
        Layout.fillWidth: true
        color: bar.snapshots.remark.length > 0 ? Theme.warning : Theme.textMuted
        elide: Text.ElideRight
        text: PlainText.line(bar.snapshots.remark.length > 0 ? bar.snapshots.remark
                                                             : "Live values such as temperatures are left out.")
    }

    FilterButton {
        objectName: "onlySettableButton"
        text: "Writable only"
        checked: bar.differences.onlySettable
        onToggled: bar.differences.onlySettable = checked
    }
}
