import QtQuick 2.15
import QtQuick.Layouts 1.15
import "../assembly"

// The ranges of the inertial unit: rotation and acceleration.
FunctionRow {
    id: row

    property var sent: [-1, -1]

    name: "zeltoImuRange"
    text: "IMU Range"
    said: ({ "setImuRange": "Saved" })
    onSucceeded: [angular.held, acceleration.held] = sent
    onForget: {
        angular.forget();
        acceleration.forget();
    }

    UnreadComboBox {
        id: angular

        objectName: "zeltoAngularRangeCombo"
        Layout.preferredWidth: 1
        Accessible.name: "Angular range"
        hint: "Angular range in degrees per second. It can't be read from the sensor"
        model: ["±2000 dps", "±1000 dps", "±500 dps", "±250 dps", "±125 dps", "±4000 dps"]
    }

    UnreadComboBox {
        id: acceleration

        objectName: "zeltoAccelerationRangeCombo"
        Layout.preferredWidth: 1
        Accessible.name: "Acceleration range"
        hint: "Acceleration range. It can't be read from the sensor"
        model: ["±16g", "±8g", "±4g", "±2g"]
    }

    SaveButton {
        objectName: "zeltoImuRangeSave"
        onClicked: {
            if (angular.currentIndex < 0 || acceleration.currentIndex < 0) {
                row.say("Choose both ranges first", true);
            } else {
                row.sent = [angular.currentIndex, acceleration.currentIndex];
                varkel_manager.smallSensor.setImuRange(angular.currentIndex, acceleration.currentIndex);
            }
        }
    }
}
