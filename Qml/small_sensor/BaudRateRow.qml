import QtQuick 2.15
import "../assembly"

FunctionRow {
    id: row

    name: "zeltoBaudRate"
    text: "Baud Rate"
    said: ({ "readBaudRate": "Read", "setBaudRate": "Saved" })
    onForget: field.forget()

    SettingField {
        id: field

        objectName: "zeltoBaudRateField"
        Accessible.name: "Baud Rate"
        hint: "Bits per second on the sensor's serial line"
    }

    GetButton {
        objectName: "zeltoBaudRateGet"
        onClicked: varkel_manager.smallSensor.readBaudRate()
    }

    SaveButton {
        objectName: "zeltoBaudRateSave"
        onClicked: {
            if (field.text.length > 0) {
                varkel_manager.smallSensor.setBaudRate(field.text);
            } else {
                row.say("Enter a baud rate first", true);
            }
        }
    }

    Connections {
        target: varkel_manager.smallSensor

        function onBaudRateRead(text) {
            if (text) {
                field.show(text);
            }
        }
    }
}
