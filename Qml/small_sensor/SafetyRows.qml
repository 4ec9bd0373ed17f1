import QtQuick 2.15
import QtQuick.Layouts 1.15
import Varkel.Shell 1.0
import "../assembly"

// The sensor's own judgement of its health, read on demand: a state, and the codes of its faults.
Column {
    id: safety

    property string faultState: "Normal"
    property var codes: ["None"]

    LabelledRow {
        width: safety.width
        text: "Function Safety"

        ControlCaption {
            text: "Fault State"
        }

        BodyText {
            objectName: "zeltoFaultState"
            Layout.fillWidth: true
            Layout.leftMargin: Theme.gapSmall
            Accessible.name: "Fault State " + text
            text: PlainText.line(safety.faultState)
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
            model: safety.codes
        }
    }

    Connections {
        target: varkel_manager.smallSensor

        function onSafetyRead(texts) {
            if (texts.length > 0) {
                safety.faultState = texts[0];
                safety.codes = texts.length > 1 ? texts.slice(1) : ["None"];
            }
        }
    }
}
