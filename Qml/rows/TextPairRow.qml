import QtQuick 2.15
import "../assembly"

// A variable that is only shown: two texts, the value to select and copy.
RowFrame {
    id: row

    onValueTextChanged: field.show(valueText)

    DefaultTextField {
        id: field

        objectName: "field_" + row.place
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        Accessible.name: row.label
        readOnly: true
        dimmed: row.dimmed
        Component.onCompleted: show(row.valueText)
    }
}
