import QtQuick 2.15
import QtQuick.Layouts 1.15
import "../assembly"

// Values that can be written to the sensor but not read from it: none is selected until the user selects one, and the
// last one that the sensor accepted counts as its value.
DefaultComboBox {
    id: combo

    property int held: -1

    function forget() {
        held = -1;
        currentIndex = -1;
    }

    Layout.fillWidth: true
    currentIndex: -1
    unlisted: "not read"
    dimmed: currentIndex < 0
    marked: currentIndex !== held
    hint: "It can't be read from the sensor"
}
