import QtQuick 2.15
import QtQuick.Layouts 1.15
import "."

// A command typed as hexadecimal text, its reply, and the commands sent so far, which Up and Down in a field recall.
Column {
    id: widget

    property var history: []
    property string replyHeader
    property string replyPayload
    property string replyDecoded
    property bool ready: true
    property int recalled: -1

    signal send(string code, string payload)

    function submit() {
        if (ready && codeField.text.length > 0) {
            recalled = -1;
            send(codeField.text, payloadField.text);
        }
    }

    function fill(code, payload) {
        codeField.show(code);
        codeField.text = code;
        payloadField.show(payload);
        payloadField.text = payload;
    }

    function recall(step) {
        var position = Math.max(-1, Math.min(history.length - 1, recalled + step));
        recalled = position;
        if (position < 0) {
            fill("", "");
        } else {
            fill(history[position].send_cmd_history, history[position].send_payload_history);
        }
    }

    spacing: Theme.gapTiny

    LabelledRow {
        width: parent.width
        text: "Command Code"

        DefaultTextField {
            id: codeField

            objectName: "commandCodeField"
            Layout.fillWidth: true
            Accessible.name: "Command Code"
            placeholderText: "0x07"
            hint: "Hexadecimal, with or without 0x"
            onAccepted: widget.submit()
            Keys.onUpPressed: widget.recall(1)
            Keys.onDownPressed: widget.recall(-1)
        }
    }

    LabelledRow {
        width: parent.width
        text: "Payload"

        DefaultTextField {
            id: payloadField

            objectName: "commandPayloadField"
            Layout.fillWidth: true
            Accessible.name: "Payload"
            placeholderText: "0x01 02 0A"
            hint: "Hexadecimal bytes separated by spaces"
            onAccepted: widget.submit()
            Keys.onUpPressed: widget.recall(1)
            Keys.onDownPressed: widget.recall(-1)
        }
    }

    LabelledRow {
        width: parent.width

        Item {
            Layout.fillWidth: true
        }

        DefaultToolButton {
            objectName: "sendButton"
            text: "Send"
            primary: true
            enabled: widget.ready
            hint: widget.ready ? "" : "Connect first"
            onClicked: widget.submit()
        }
    }

    SectionTitle {
        width: parent.width
        text: "Return"
    }

    Repeater {
        model: [
            { "name": "Header", "object": "replyHeader", "text": widget.replyHeader },
            { "name": "Payload", "object": "replyPayload", "text": widget.replyPayload }
        ]

        Item {
            width: widget.width
            height: box.implicitHeight + Theme.gapTiny

            BodyText {
                height: Theme.rowHeight - Theme.gapTiny
                text: modelData.name
            }

            ReplyText {
                id: box

                objectName: modelData.object
                x: parent.width * Theme.labelShare
                width: parent.width - x
                name: modelData.name
                text: modelData.text
            }
        }
    }

    // The fields of the reply according to the table, next to their bytes.
    Column {
        width: parent.width
        spacing: Theme.gapTiny
        visible: widget.replyDecoded.length > 0

        BodyText {
            text: "Decoded"
        }

        DecodedBytes {
            objectName: "replyDecoded"
            width: parent.width
            name: "Decoded"
            text: widget.replyDecoded
        }
    }

    SectionTitle {
        width: parent.width
        text: "Command Log"
    }

    HistoryTable {
        objectName: "commandLog"
        width: parent.width
        entries: widget.history
        onChosen: {
            widget.recalled = -1;
            widget.fill(code, payload);
        }
    }
}
