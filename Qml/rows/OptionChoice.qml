import QtQuick 2.15
import QtQuick.Layouts 1.15
import "../assembly"

// The options of the row's variable; flat text where it can't be written.
Item {
    id: choice

    property RowFrame row
    readonly property var labels: row.values.optionLabels
    readonly property var options: row.values.options.map(String)
    readonly property int chosen: options.indexOf(row.valueText)
    readonly property string chosenLabel: chosen >= 0 && chosen < labels.length ? labels[chosen]
                                                                                 : row.valueText

    implicitHeight: Theme.controlHeight

    function follow() {
        combo.currentIndex = chosen;
        flat.show(chosenLabel);
    }

    onChosenChanged: follow()
    onChosenLabelChanged: follow()
    Component.onCompleted: follow()

    DefaultComboBox {
        id: combo

        objectName: "field_" + choice.row.place
        anchors.fill: parent
        visible: choice.row.writable
        Accessible.name: choice.row.label
        model: choice.labels
        onModelChanged: choice.follow() // a new model takes the current entry away
        unlisted: choice.row.valueText
        marked: choice.row.edited
        faulty: choice.row.faulty
        dimmed: choice.row.unread
        hintBeside: true
        hint: choice.row.hint
        onActivated: {
            choice.row.submit(3, String(index));
            choice.follow();
        }
    }

    DefaultTextField {
        id: flat

        objectName: "field_" + choice.row.place + "_text"
        anchors.fill: parent
        visible: !choice.row.writable
        Accessible.name: choice.row.label
        readOnly: true
        dimmed: choice.row.unread
    }
}
