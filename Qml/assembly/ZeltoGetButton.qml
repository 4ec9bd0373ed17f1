import QtQuick 2.15
import "."

// Without a tip, which would cover "Save" beside it.
ZeltoButton {
    text: "Get"
    Accessible.description: "Reads it from the sensor"
}
