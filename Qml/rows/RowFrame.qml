import QtQuick 2.15
import QtQuick.Layouts 1.15
import Varkel.Shell 1.0
import "../assembly"

// One variable's row: its label, its control in a column that lines up with the other rows, and its marks.
// The page calls `refresh()` when the variable may have changed.
Item {
    id: frame

    property var entry: ["", 0, 0, 0, 0]
    property var values: ({})
    property string mark
    property bool outOfRange: false
    property string valueText: values.current_val === undefined ? "" : values.current_val
    readonly property string label: PlainText.line(entry[0])
    readonly property int module: entry[2]
    readonly property int group: entry[3]
    readonly property int variable: entry[4]
    readonly property string place: module + "_" + group + "_" + variable
    readonly property bool live: varkel_manager.isTimerUpdate(module, group, variable)
    readonly property bool writable: values.permission !== undefined && Number(values.permission) !== 0
    readonly property bool edited: values.edited === true
    readonly property string hint: describe()
    default property alias content: slot.data

    signal refreshed

    function refresh() {
        mark = varkel_manager.valueMark(module, group, variable);
        values = varkel_manager.variableMap(module, group, variable);
        refreshed();
    }

    function refreshIfChanged() {
        if (varkel_manager.valueMark(module, group, variable) !== mark) {
            refresh();
        }
    }

    function submit(type, text) {
        outOfRange = false;
        varkel_manager.SetText(type, module, group, variable, text);
        refresh();
    }

    function describe() {
        var lines = [label];
        if (values.range_min !== undefined && values.range_max !== undefined
                && (Number(values.range_min) !== 0 || Number(values.range_max) !== 0)) {
            lines.push("Range: " + values.range_min + " to " + values.range_max
                       + PlainText.line(values.unit || ""));
        }
        if (values.var_type) {
            lines.push("Type: " + PlainText.line(values.var_type));
        }
        if (live) {
            lines.push("Refreshed continuously");
        }
        if (edited) {
            lines.push("Changed, not saved yet");
        }
        if (outOfRange) {
            lines.push("Out of range");
        }
        return lines.join("\n");
    }

    objectName: "row_" + place
    implicitHeight: Theme.rowHeight

    Accessible.role: Accessible.Row
    Accessible.name: label

    HoverHandler {
        id: pointer
    }

    Rectangle {
        anchors.fill: parent
        anchors.leftMargin: -Theme.gapSmall
        anchors.rightMargin: -Theme.gapSmall
        radius: Theme.radius
        color: pointer.hovered ? Theme.raised : "transparent"
    }

    Rectangle {
        objectName: "editedMark"
        x: -Theme.gapSmall
        width: Theme.markWidth
        height: parent.height
        visible: frame.edited || frame.outOfRange
        color: frame.outOfRange ? Theme.error : Theme.accent
    }

    BodyText {
        id: caption

        width: parent.width * Theme.labelShare - Theme.gap
        height: Theme.rowHeight
        text: frame.label
        color: frame.edited ? Theme.text : Theme.textMuted
        elide: Text.ElideRight

        HoverHandler {
            id: captionPointer
        }

        Hint {
            text: frame.hint
            shown: captionPointer.hovered
        }
    }

    RowLayout {
        id: slot

        x: parent.width * Theme.labelShare
        width: parent.width - x - mark.width - Theme.gapSmall
        height: parent.height
        spacing: Theme.gapSmall
    }

    LiveMark {
        id: mark

        anchors.right: parent.right
        height: Theme.rowHeight
        shown: frame.live
    }

    Component.onCompleted: refresh()
}
