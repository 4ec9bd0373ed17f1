import "."

ZeltoButton {
    text: "Get"
    hint: "Reads it from the sensor"
}
