import QtQuick 2.15
import "../assembly"

// What a small sensor can be told and asked, one row each. Rows that the model does not have are hidden.
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
        operation: "ZeltoSetStandby"
        choices: ["In Operation", "Standby"]
    }

    ChoiceRow {
        width: section.width
        text: "Spin Rate"
        controlName: "zeltoSpinRate"
        operation: "ZeltoSetSpinRate"
        choices: ["5hz", "10hz"]
    }

    ChoiceRow {
        width: section.width
        text: "Return Mode"
        controlName: "zeltoReturnMode"
        operation: "ZeltoSetReturnMode"
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
