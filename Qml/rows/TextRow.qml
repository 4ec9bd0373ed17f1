import QtQuick 2.15
import "../assembly"

// A variable in a text field.
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
        readOnly: !row.writable || cut
        marked: row.edited
        faulty: row.faulty
        dimmed: row.unread
        hintBeside: true
        hint: row.writable ? row.hint : ""
        onCommit: {
            row.submit(1, text);
            show(row.valueText);
        }
        Component.onCompleted: show(row.valueText)
    }
}
