import "../assembly"

SensorButton {
    text: "Get"
    tip: "Reads it from the sensor"
}
