import QtQuick 2.15
import "../assembly"

// What a small sensor can be set to and asked for, one row each. Rows that the model does not have are hidden.
Section {
    id: section

    property string selectedModel

    title: "Lidar Function"

    BaudRateRow {
        width: section.width
    }

    ChoiceRow {
        width: section.width
        text: "Standby Mode"
        controlName: "zeltoStandby"
        onSaved: varkel_manager.smallSensor.setStandby(index)
        choices: ["In Operation", "Standby"]
    }

    ChoiceRow {
        width: section.width
        text: "Spin Rate"
        controlName: "zeltoSpinRate"
        onSaved: varkel_manager.smallSensor.setSpinRate(index)
        choices: ["5hz", "10hz"]
    }

    ChoiceRow {
        width: section.width
        text: "Return Mode"
        controlName: "zeltoReturnMode"
        onSaved: varkel_manager.smallSensor.setReturnMode(index)
        choices: ["Strongest", "Last"]
    }

    ImuRangeRow {
        width: section.width
        visible: section.selectedModel === "Marvo-KTC"
    }

    CalibrationRow {
        width: section.width
    }

    SafetyRows {
        width: section.width
    }

    DestinationRows {
        width: section.width
        selectedModel: section.selectedModel
    }
}
