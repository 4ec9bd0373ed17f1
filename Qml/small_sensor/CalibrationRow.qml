import QtQuick 2.15
import QtQuick.Layouts 1.15
import "../assembly"

// Saves the sensor's correction data to a file in the chosen folder.
FunctionRow {
    id: row

    property string file

    // "file:///home/me" and "file:///C:/me" are absolute paths, "file://server/share" is a network folder.
    function localPath(url) {
        return decodeURIComponent(url.toString()).replace(/^file:(\/\/\/(?=[A-Za-z]:)|\/\/(?=\/))?/, "");
    }

    function save(folder) {
        file = "correction_" + new Date().toLocaleString(Qt.locale("C"), "yyyyMMdd-hhmmss") + ".bin";
        varkel_manager.smallSensor.readCorrection(localPath(folder).replace(/\/$/, "") + "/" + file);
    }

    name: "zeltoCalibration"
    objectName: "zeltoCalibrationRow"
    text: "Lidar Calibration File"
    said: ({ "readCorrection": "Saved as " + file + "," })

    Item {
        Layout.fillWidth: true
    }

    SensorButton {
        objectName: "zeltoCalibrationDownload"
        text: "Download"
        tip: "Asks for a folder to save it in"
        onClicked: question.ask({
            "title": "Choose the folder for the calibration file",
            "selectFolder": true
        })
    }

    FileQuestion {
        id: question

        onChosen: row.save(file)
    }
}
