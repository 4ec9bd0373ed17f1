import QtQuick 2.15
import QtQuick.Layouts 1.15
import "../assembly"

// The ranges of the inertial unit: rotation and acceleration.
LabelledRow {
    text: "IMU Range"

    DefaultComboBox {
        id: angular

        objectName: "zeltoAngularRangeCombo"
        Layout.fillWidth: true
        Layout.preferredWidth: 1
        Accessible.name: "Angular range"
        hint: "Angular range, degrees a second"
        model: ["±2000 dps", "±1000 dps", "±500 dps", "±250 dps", "±125 dps", "±4000 dps"]
    }

    DefaultComboBox {
        id: acceleration

        objectName: "zeltoAccelerationRangeCombo"
        Layout.fillWidth: true
        Layout.preferredWidth: 1
        Accessible.name: "Acceleration range"
        hint: "Acceleration range"
        model: ["±16g", "±8g", "±4g", "±2g"]
    }

    SaveButton {
        objectName: "zeltoImuRangeSave"
        onClicked: varkel_manager.smallSensor.setImuRange(angular.currentIndex, acceleration.currentIndex)
    }
}
