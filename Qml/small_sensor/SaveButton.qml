import "../assembly"

SensorButton {
    text: "Save"
    tip: "Writes it to the sensor"
}
