import "."

ZeltoButton {
    text: "Save"
    primary: true
    hint: "Writes it to the sensor"
}
