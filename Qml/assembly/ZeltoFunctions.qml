import QtQuick 2.15
import "."

// What a small sensor can be told and asked, one row each. Rows that the model does not have are hidden.
Section {
    id: section

    property string selectedModel

    title: "Lidar Function"

    ZeltoBaudRate {
        width: section.width
    }

    ZeltoChoice {
        width: section.width
        text: "Standby Mode"
        controlName: "zeltoStandby"
        operation: "ZeltoSetStandby"
        choices: ["In Operation", "Standby"]
    }

    ZeltoChoice {
        width: section.width
        text: "Spin Rate"
        controlName: "zeltoSpinRate"
        operation: "ZeltoSetSpinRate"
        choices: ["5hz", "10hz"]
    }

    ZeltoChoice {
        width: section.width
        text: "Return Mode"
        controlName: "zeltoReturnMode"
        operation: "ZeltoSetReturnMode"
        choices: ["Strongest", "Last"]
    }

    ZeltoImuRange {
        width: section.width
        visible: section.selectedModel === "Marvo-KTC"
    }

    ZeltoCalibration {
        width: section.width
    }

    ZeltoSafety {
        width: section.width
    }

    ZeltoDestination {
        width: section.width
        selectedModel: section.selectedModel
    }
}
