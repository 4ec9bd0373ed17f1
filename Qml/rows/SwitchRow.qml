import QtQuick 2.15
import "../assembly"

// A variable that a switch turns on and off; its value is 0 when off.
RowFrame {
    id: row

    readonly property bool on: values.switchText !== "0"

    function toggle(checked) {
        submit(2, checked ? "1" : "0");
        if (!checked) {
            submit(1, "0");
        }
        toggleSwitch.checked = Qt.binding(function () {
            return row.on;
        });
    }

    onValueTextChanged: field.show(valueText)

    DefaultSwitch {
        id: toggleSwitch

        objectName: "switch_" + row.place
        anchors.verticalCenter: parent.verticalCenter
        Accessible.name: row.label
        checked: row.on
        enabled: row.writable
        onToggled: row.toggle(checked)
    }

    DefaultTextField {
        id: field

        objectName: "field_" + row.place
        anchors.left: toggleSwitch.right
        anchors.leftMargin: Theme.gapSmall
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        Accessible.name: row.label
        enabled: row.on || !row.writable
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
