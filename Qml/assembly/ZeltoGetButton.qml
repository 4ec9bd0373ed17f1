import QtQuick 2.15
import "."

// Reads one setting. It rests while the sensor is busy with another call.
DefaultToolButton {
    text: "Get"
    enabled: !varkel_manager.isWorking
    hint: "Reads it from the sensor"
}
