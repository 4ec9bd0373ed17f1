import QtQuick 2.15
import QtQuick.Layouts 1.15
import "../assembly"

LabelledRow {
    text: "Baud Rate"

    SensorCall {
        id: query

        operation: "ZeltoGetBaudRate"
        onAnswered: {
            if (result) {
                field.show(result);
            }
        }
    }

    DefaultTextField {
        id: field

        objectName: "zeltoBaudRateField"
        Layout.fillWidth: true
        Accessible.name: "Baud Rate"
        hint: "Bits a second on the sensor's serial line"
    }

    GetButton {
        objectName: "zeltoBaudRateGet"
        onClicked: query.start([])
    }

    SaveButton {
        objectName: "zeltoBaudRateSave"
        onClicked: {
            if (field.text.length > 0) {
                varkel_manager.CallInBackground("ZeltoSetBaudRateFromUI", [field.text]);
            }
        }
    }
}
