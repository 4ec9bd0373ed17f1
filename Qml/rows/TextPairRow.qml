import QtQuick 2.15
import "../assembly"

// A read-only variable: two texts, of which the value can be selected and copied.
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
