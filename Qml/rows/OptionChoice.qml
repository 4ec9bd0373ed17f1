import QtQuick 2.15
import "../assembly"

// The options of the row's variable, or plain text if it can't be written.
Item {
    id: choice

    property RowFrame row
    readonly property var labels: row.values.optionLabels
    readonly property var options: row.values.options.map(String)
    readonly property int chosen: options.indexOf(row.valueText)
    readonly property string chosenLabel: chosen >= 0 && chosen < labels.length ? labels[chosen]
                                                                                 : row.valueText

    implicitHeight: Theme.controlHeight

    Loader {
        anchors.fill: parent
        sourceComponent: choice.row.writable ? list : flatText
    }

    Component {
        id: list

        DefaultComboBox {
            objectName: "field_" + choice.row.place
            Accessible.name: choice.row.label
            model: choice.labels
            currentIndex: choice.chosen
            unlisted: choice.row.valueText
            marked: choice.row.edited
            faulty: choice.row.faulty
            dimmed: choice.row.dimmed
            hintBeside: true
            hint: choice.row.hint
            onActivated: {
                choice.row.submit(3, String(index));
                currentIndex = Qt.binding(() => choice.chosen); // the user's choice broke the previous binding
            }
        }
    }

    Component {
        id: flatText

        DefaultTextField {
            readonly property string label: choice.chosenLabel

            objectName: "field_" + choice.row.place + "_text"
            Accessible.name: choice.row.label
            readOnly: true
            dimmed: choice.row.dimmed
            onLabelChanged: show(label)
            Component.onCompleted: show(label)
        }
    }
}
