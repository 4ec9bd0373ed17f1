import QtQuick 2.15
import "../assembly"

// A difference: whether to apply it, its texts, and its outcome.
Item {
    id: row

    property QtObject values // the model's roles
    property bool focused: false
    property bool resting: false // disables selecting
    readonly property bool selectable: values.settable && !values.edited
    readonly property string remark: values.outcome.length > 0 ? (values.good ? "✓ " : "✗ ") + values.outcome
                                    : values.edited ? "unsaved edit, left unchanged"
                                                    : values.settable ? "" : "read only"

    signal toggled(bool on)
    signal clicked

    implicitHeight: Theme.rowHeight

    Accessible.role: Accessible.Row
    Accessible.name: values.page + ", " + values.name + ", " + values.left + ", " + values.right + ", " + remark

    RowBackground {
        anchors.fill: parent
        hovered: pointer.containsMouse
        focused: row.focused
    }

    MouseArea {
        id: pointer

        anchors.fill: parent
        hoverEnabled: true
        onClicked: row.clicked()
        onDoubleClicked: {
            if (row.selectable && !row.resting) {
                row.toggled(!row.values.selected);
            }
        }
    }

    CheckMark {
        id: box

        objectName: "differenceBox"
        focusPolicy: Qt.NoFocus // the table has the focus, and Space ticks the box
        anchors.verticalCenter: parent.verticalCenter
        text: "Apply " + row.values.name
        hint: row.values.edited ? "It has an unsaved edit: save or cancel it first"
                                : row.values.settable ? "" : "It can't be set"
        enabled: row.selectable && !row.resting
        checkState: row.values.selected ? Qt.Checked : Qt.Unchecked
        nextCheckState: () => {
            row.toggled(!row.values.selected);
            return row.values.selected ? Qt.Checked : Qt.Unchecked;
        }
    }

    DifferenceCells {
        anchors.left: box.right
        anchors.right: parent.right
        height: parent.height
        page: row.values.page
        name: row.values.name
        leftText: row.values.left
        rightText: row.values.right
        outcome: row.remark
        tone: row.selectable ? Theme.text : Theme.textMuted
        outcomeTone: row.values.outcome.length === 0 ? (row.values.edited ? Theme.warning : Theme.textFaint)
                                                     : row.values.good ? Theme.success : Theme.error
    }
}
