import QtQuick 2.15
import QtQuick.Layouts 1.15
import Varkel.Shell 1.0
import "../assembly"

// The sensor's information: names and values, which can be selected and copied. A refresh changes the values in place,
// so a selection is kept.
Column {
    id: table

    property var entries: []
    property string fieldName

    Repeater {
        model: table.entries.length

        LabelledRow {
            id: row

            readonly property var entry: table.entries[index] || ({ "label": "", "value": "" })

            width: table.width
            text: PlainText.line(entry.label)

            DefaultTextField {
                readonly property string latest: row.entry.value

                objectName: table.fieldName + "_" + index
                Layout.fillWidth: true
                Accessible.name: row.text
                readOnly: true
                onLatestChanged: show(latest)
            }
        }
    }
}
