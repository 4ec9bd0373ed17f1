import "."

ZeltoButton {
    text: "Save"
    primary: true
    tip: "Writes it to the sensor"
}
