import QtQuick 2.15
import QtQuick.Templates 2.15 as T
import Varkel.Shell 1.0
import "."

// A text field. `commit(text)` is emitted when an edit is finished (Enter, Tab or a click elsewhere), if the text
// differs from the shown value; Escape cancels the edit. With `readOnly` it is plain text to select and copy.
// `undone` and `redone` are emitted for undo and redo while nothing is being typed. `cut` means that the value given
// to `show(value)` is too long to be shown: an edit would lose the rest.
T.TextField {
    id: field

    property string value
    property bool cut: false
    property bool marked: false
    property bool faulty: false
    property bool dimmed: false
    property string hint
    property bool hintBeside: false
    readonly property bool typing: activeFocus && (text !== value || selectedText.length > 0)

    signal commit(string text)
    signal undone
    signal redone

    function show(newValue) {
        var held = typing;
        value = PlainText.field(newValue);
        cut = PlainText.isCut(newValue);
        if (!held) {
            setText(value);
        }
    }

    function finish() {
        if (!readOnly && text !== value) {
            value = text;
            commit(text);
        }
    }

    function setText(newText) {
        if (text !== newText) {
            text = newText;
            cursorPosition = activeFocus ? text.length : 0;
        }
    }

    implicitWidth: 160
    implicitHeight: Theme.controlHeight
    leftPadding: Theme.gapSmall
    rightPadding: Theme.gapSmall
    color: dimmed && !typing ? Theme.textMuted : Theme.text
    selectionColor: Theme.selection
    selectedTextColor: Theme.accentText
    placeholderTextColor: Theme.textFaint
    font.family: Theme.family
    font.pixelSize: Theme.font
    verticalAlignment: TextInput.AlignVCenter
    selectByMouse: true
    hoverEnabled: true
    clip: true
    opacity: enabled ? 1 : Theme.disabledOpacity

    Accessible.role: Accessible.EditableText
    Accessible.readOnly: readOnly
    Accessible.description: hint

    Keys.onPressed: {
        var redo = event.matches(StandardKey.Redo) || (event.key === Qt.Key_Z
                   && event.modifiers === (Qt.ControlModifier | Qt.ShiftModifier));
        if (text === value && (redo || event.matches(StandardKey.Undo))) {
            event.accepted = true;
            redo ? redone() : undone();
        }
    }
    Keys.onEscapePressed: {
        event.accepted = text !== value;
        setText(value);
    }

    onEditingFinished: finish()
    onActiveFocusChanged: {
        if (!activeFocus) {
            finish();
            deselect();
            setText(value);
        } else if (!readOnly && (focusReason === Qt.TabFocusReason || focusReason === Qt.BacktabFocusReason)) {
            selectAll(); // so that typing replaces the value
        }
    }

    background: Rectangle {
        color: field.readOnly ? "transparent" : Theme.field
        radius: Theme.radius
        border.width: field.activeFocus && !field.readOnly ? 2 * Theme.line : Theme.line
        border.color: {
            if (field.faulty) {
                return Theme.error;
            }
            if (field.activeFocus) {
                return field.readOnly ? Theme.border : Theme.borderFocus;
            }
            if (field.readOnly) {
                return "transparent";
            }
            return field.hovered ? Theme.borderHover : Theme.border;
        }

        EditedLine {
            visible: field.marked
        }
    }

    Loader {
        anchors.fill: parent
        anchors.leftMargin: field.leftPadding
        anchors.rightMargin: field.rightPadding
        active: field.placeholderText.length > 0
        visible: field.length === 0 && field.preeditText.length === 0
        sourceComponent: BodyText {
            text: field.placeholderText
            color: field.placeholderTextColor
            elide: Text.ElideRight
            Accessible.ignored: true
        }
    }

    Hint {
        text: field.hint
        beside: field.hintBeside
        shown: field.hovered && !field.activeFocus
    }
}
