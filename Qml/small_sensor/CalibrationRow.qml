import QtQuick 2.15
import QtQuick.Layouts 1.15
import "../assembly"

// The sensor's correction data, put into a file of the chosen folder.
LabelledRow {
    id: row

    property string file

    // "file:///home/me" and "file:///C:/me" are absolute paths, "file://server/share" is a folder of the network.
    function localPath(url) {
        return decodeURIComponent(url.toString()).replace(/^file:(\/\/\/(?=[A-Za-z]:)|\/\/(?=\/))?/, "");
    }

    function save(folder) {
        file = "correction_" + Qt.formatDateTime(new Date(), "yyyyMMdd-hhmmss") + ".bin";
        outcome.text = "";
        varkel_manager.smallSensor.readCorrection(localPath(folder).replace(/\/$/, "") + "/" + file);
    }

    objectName: "zeltoCalibrationRow"
    text: "Lidar Calibration File"

    BodyText {
        id: outcome

        objectName: "zeltoCalibrationOutcome"
        Layout.fillWidth: true
        color: Theme.textMuted
        elide: Text.ElideMiddle
    }

    SensorButton {
        objectName: "zeltoCalibrationDownload"
        text: "Download"
        tip: "Asks first for the folder to put it in"
        onClicked: question.ask({
            "title": "Choose the folder for the calibration file",
            "selectFolder": true
        })
    }

    FileQuestion {
        id: question

        onChosen: row.save(file)
    }

    Connections {
        target: varkel_manager.smallSensor

        function onCorrectionRead(code) {
            outcome.text = code === 0 ? "Saved as " + row.file : "";
        }
    }
}
