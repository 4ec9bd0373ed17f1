import QtQuick 2.15
import Varkel.Shell 1.0
import "../assembly"

// A group's heading.
Item {
    id: heading

    property int module: 0
    property QtObject values // the roles of the page's list model
    readonly property string label: PlainText.line(values.label)

    objectName: "heading_" + module + "_" + values.group
    implicitHeight: Theme.rowHeight + (values.group > 0 ? Theme.gap : 0)

    SectionTitle {
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        height: Theme.rowHeight
        text: heading.label
    }
}
