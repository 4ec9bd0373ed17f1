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
        dimmed: row.dimmed
        hintBeside: true
        hint: row.writable ? row.hint : ""
        onCommit: {
            row.submit(1, text);
            show(row.valueText);
        }
        onUndone: varkel_manager.edits.undo()
        onRedone: varkel_manager.edits.redo()
        Component.onCompleted: show(row.valueText)
    }
}
