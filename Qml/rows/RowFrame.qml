import QtQuick 2.15
import Varkel.Shell 1.0
import "../assembly"

// One variable's row: its label, its control, aligned with those of the other rows, and its marks. The control shows
// `valueText` whenever that changes.
Item {
    id: frame

    property int module: 0
    property QtObject values // the roles of the page's list model
    readonly property string valueText: values.text
    readonly property string label: PlainText.line(values.label)
    readonly property string place: module + "_" + values.group + "_" + values.variable
    readonly property bool live: values.live && varkel_manager.IsConnected && !varkel_manager.IsUpgrading
                                 && !varkel_manager.IsDownloadLog
    readonly property bool writable: values.writable
    readonly property bool edited: values.edited
    readonly property bool unread: values.origin === "default"
    readonly property bool dimmed: unread || values.stale && !edited
    readonly property bool differs: values.origin === "differs"
    readonly property bool refused: values.refusal.length > 0
    readonly property string note: noteText()
    readonly property bool ticked: note.length === 0 && !edited && values.origin === "verified"
    property bool noteInCaption: false // puts the note beside the label if the control can't make room for it
    // The width that the control leaves to the note; the details pane takes the space outside the row.
    readonly property real noteRoom: noteInCaption || note.length === 0 || !noteLoader.item ? 0
                                     : Math.min(noteLoader.item.implicitWidth + Theme.gapSmall,
                                                (width - slot.x - mark.width) * Theme.noteShare)
    readonly property string verdict: values.verdict
    readonly property bool faulty: verdict.length > 0 || refused
    readonly property string hint: describe()
    default property alias content: slot.data

    function submit(type, text) {
        varkel_manager.SetText(type, module, values.group, values.variable, text);
    }

    function labelOf(text) {
        var option = values.options.map(String).indexOf(text);
        return PlainText.line(option < 0 ? text : values.optionLabels[option]);
    }

    function noteText() {
        if (refused) {
            return values.refusal;
        }
        if (edited) {
            return values.origin === "edited" ? "was " + PlainText.line(values.heldText) : "changed";
        }
        if (differs) {
            return "sent " + PlainText.line(values.sentText) + ", sensor holds " + labelOf(valueText);
        }
        return values.origin === "sent" ? "sent, not read back" : "";
    }

    function describe() {
        var lines = [label];
        if (values.rangeMin !== 0 || values.rangeMax !== 0) {
            lines.push("Range: " + values.rangeMin + " to " + values.rangeMax + PlainText.line(values.unit));
        }
        if (values.type.length > 0) {
            lines.push("Type: " + PlainText.line(values.type));
        }
        if (live) {
            lines.push("Refreshed continuously");
        }
        if (unread) {
            lines.push("Not read from the sensor yet");
        } else if (values.stale && !edited) {
            lines.push("Read before the connection ended");
        } else if (edited) {
            lines.push("Changed, not saved yet");
        } else if (values.origin === "verified") {
            lines.push("Saved and read back");
        } else if (differs) {
            lines.push("Sent " + PlainText.line(values.sentText) + ", sensor holds " + labelOf(valueText));
        }
        if (verdict.length > 0) {
            lines.push("The value " + verdict);
        }
        if (refused) {
            lines.push("The last save was " + values.refusal);
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
        visible: frame.edited || frame.faulty || frame.differs
        color: frame.faulty ? Theme.error : frame.edited ? Theme.mark : Theme.warning
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

    Item {
        id: slot

        x: parent.width * Theme.labelShare
        width: parent.width - x - mark.width - Theme.gapSmall - frame.noteRoom
        height: parent.height
    }

    Loader {
        id: mark

        anchors.right: parent.right
        width: Theme.liveMarkWidth // also without a mark, so that the rows are aligned
        height: Theme.rowHeight
        active: frame.live
        sourceComponent: LiveMark {}
    }

    Loader {
        id: noteLoader

        readonly property real captionEnd: Math.min(caption.implicitWidth, caption.width / 2) + Theme.gap

        x: frame.ticked ? (frame.live ? slot.x - width : mark.x)
           : frame.noteInCaption ? captionEnd : slot.x + slot.width + Theme.gapSmall
        width: frame.ticked ? mark.width : frame.noteInCaption ? slot.x - captionEnd - Theme.gap : frame.noteRoom
        height: Theme.rowHeight
        active: frame.note.length > 0 || frame.ticked
        sourceComponent: RowNote {
            text: frame.note
            ticked: frame.ticked
            tone: frame.faulty ? Theme.error : frame.differs && !frame.edited ? Theme.warning : Theme.textMuted
        }
    }
}
