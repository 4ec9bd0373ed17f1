import QtQuick 2.15
import QtQuick.Templates 2.15 as T
import "."

// The commands sent, newest first. A click on a row puts its command and payload into the fields.
Column {
    id: table

    property var entries: []
    readonly property int timeWidth: 170
    readonly property int codeWidth: 130

    signal chosen(string code, string payload)

    HistoryRow {
        width: table.width
        heading: true
        timeWidth: table.timeWidth
        codeWidth: table.codeWidth
        time: "Time"
        code: "Command Code"
        payload: "Payload"
    }

    Repeater {
        model: table.entries

        HistoryRow {
            objectName: "historyRow_" + index
            width: table.width
            timeWidth: table.timeWidth
            codeWidth: table.codeWidth
            time: modelData.record_time
            code: modelData.send_cmd_history
            payload: modelData.send_payload_history
            onClicked: table.chosen(code, payload)
        }
    }

    BodyText {
        width: table.width
        height: Theme.rowHeight
        leftPadding: Theme.gapSmall
        visible: table.entries.length === 0
        color: Theme.textFaint
        text: "Nothing sent yet"
    }
}
