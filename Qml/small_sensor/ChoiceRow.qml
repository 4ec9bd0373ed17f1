import QtQuick 2.15
import "../assembly"

// A setting with named values, which can be written to the sensor but not read from it.
FunctionRow {
    id: row

    property var choices: []
    property int sent: -1

    signal saved(int index)

    onSucceeded: combo.held = sent
    onForget: combo.forget()

    UnreadComboBox {
        id: combo

        objectName: row.name + "Combo"
        Accessible.name: row.text
        model: row.choices
    }

    SaveButton {
        objectName: row.name + "Save"
        onClicked: {
            if (combo.currentIndex < 0) {
                row.say("Choose a value first", true);
            } else {
                row.sent = combo.currentIndex;
                row.saved(row.sent);
            }
        }
    }
}
