import QtQuick 2.15
import QtQuick.Layouts 1.15
import "../assembly"

// A setting with named values, which can be written to the sensor but not read from it.
LabelledRow {
    id: row

    property string controlName
    property var choices: []

    signal saved(int index)

    DefaultComboBox {
        id: combo

        objectName: row.controlName + "Combo"
        Layout.fillWidth: true
        Accessible.name: row.text
        model: row.choices
    }

    SaveButton {
        objectName: row.controlName + "Save"
        onClicked: row.saved(combo.currentIndex)
    }
}
