import "../assembly"

SensorButton {
    text: "Save"
    primary: true
    tip: "Writes it to the sensor"
}
