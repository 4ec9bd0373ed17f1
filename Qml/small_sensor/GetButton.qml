import QtQuick 2.15
import "../assembly"

// Without a tip, which would cover "Save" beside it.
SensorButton {
    text: "Get"
    Accessible.description: "Reads it from the sensor"
}
