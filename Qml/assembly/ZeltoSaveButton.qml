import QtQuick 2.15
import "."

// Writes one setting. It rests while the sensor is busy with another call.
DefaultToolButton {
    text: "Save"
    primary: true
    enabled: !varkel_manager.isWorking
    hint: "Writes it to the sensor"
}
