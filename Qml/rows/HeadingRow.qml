import QtQuick 2.15
import Varkel.Shell 1.0
import "../assembly"

// A group's heading.
Item {
    id: heading

    property var entry: ["", 0, 0, 0, -1]
    readonly property string label: PlainText.line(entry[0])

    objectName: "heading_" + entry[2] + "_" + entry[3]
    implicitHeight: Theme.rowHeight + (entry[3] > 0 ? Theme.gap : 0)

    SectionTitle {
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        height: Theme.rowHeight
        text: heading.label
    }
}
