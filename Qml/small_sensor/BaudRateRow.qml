import QtQuick 2.15
import QtQuick.Layouts 1.15
import "../assembly"

LabelledRow {
    text: "Baud Rate"

    DefaultTextField {
        id: field

        objectName: "zeltoBaudRateField"
        Layout.fillWidth: true
        Accessible.name: "Baud Rate"
        hint: "Bits a second on the sensor's serial line"
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
