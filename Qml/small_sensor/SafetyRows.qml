import QtQuick 2.15
import QtQuick.Layouts 1.15
import Varkel.Shell 1.0
import "../assembly"

// The sensor's own assessment of its health, read on demand: a state and fault codes.
Column {
    id: safety

    property bool read: false
    property string faultState: "Normal"
    property var codes: ["None"]

    FunctionRow {
        width: safety.width
        name: "zeltoSafety"
        text: "Function Safety"
        said: ({ "readSafety": "Read" })
        unread: "not read"
        onForget: {
            safety.read = false;
            safety.faultState = "Normal";
            safety.codes = ["None"];
        }

        ControlCaption {
            text: "Fault State"
        }

        BodyText {
            objectName: "zeltoFaultState"
            Layout.fillWidth: true
            Layout.leftMargin: Theme.gapSmall
            Accessible.name: "Fault State " + (safety.read ? text : "not read")
            text: PlainText.line(safety.faultState)
            color: safety.read ? Theme.text : Theme.textMuted
            elide: Text.ElideRight
        }

        GetButton {
            objectName: "zeltoSafetyGet"
            onClicked: varkel_manager.smallSensor.readSafety()
        }
    }

    LabelledRow {
        width: safety.width

        ControlCaption {
            text: "Fault Code"
        }

        DefaultComboBox {
            objectName: "zeltoFaultCodeCombo"
            Layout.fillWidth: true
            Accessible.name: "Fault Code"
            dimmed: !safety.read
            hint: safety.read ? "" : "Not read from the sensor yet"
            model: safety.codes
        }
    }

    Connections {
        target: varkel_manager.smallSensor

        function onSafetyRead(texts) {
            if (texts.length > 0) {
                safety.read = true;
                safety.faultState = texts[0];
                safety.codes = texts.length > 1 ? texts.slice(1) : ["None"];
            }
        }
    }
}
