import QtQuick 2.15
import "../assembly"

// The functions of a small sensor, one row each. Rows that the model does not have are hidden, and all are disabled if
// the sensor can't be reached over KTC.
Section {
    id: section

    property string selectedModel
    readonly property bool reachable: varkel_manager.connectType !== 1

    title: "Lidar Function"

    BodyText {
        objectName: "zeltoFunctionsRest"
        width: section.width
        height: Theme.rowHeight
        visible: !section.reachable
        color: Theme.warning
        text: "These functions need KTC, which the serial lines of the model \"Zelto\" do not carry."
        elide: Text.ElideRight
    }

    Column {
        id: rows

        width: section.width
        enabled: section.reachable

        BaudRateRow {
            width: rows.width
        }

        ChoiceRow {
            width: rows.width
            name: "zeltoStandby"
            text: "Standby Mode"
            said: ({ "setStandby": "Saved" })
            choices: ["In Operation", "Standby"]
            onSaved: varkel_manager.smallSensor.setStandby(index)
        }

        ChoiceRow {
            width: rows.width
            name: "zeltoSpinRate"
            text: "Spin Rate"
            said: ({ "setSpinRate": "Saved" })
            choices: ["5hz", "10hz"]
            onSaved: varkel_manager.smallSensor.setSpinRate(index)
        }

        ChoiceRow {
            width: rows.width
            name: "zeltoReturnMode"
            text: "Return Mode"
            said: ({ "setReturnMode": "Saved" })
            choices: ["Strongest", "Last"]
            onSaved: varkel_manager.smallSensor.setReturnMode(index)
        }

        ImuRangeRow {
            width: rows.width
            visible: section.selectedModel === "Marvo-KTC"
        }

        CalibrationRow {
            width: rows.width
        }

        SafetyRows {
            width: rows.width
        }

        DestinationRows {
            width: rows.width
            selectedModel: section.selectedModel
        }
    }
}
