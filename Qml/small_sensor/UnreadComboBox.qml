import QtQuick 2.15
import QtQuick.Layouts 1.15
import "../assembly"

// Values that can be written to the sensor but not read from it: none is chosen until the user does, and the last
// one that the sensor took counts as held.
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
    hint: "The sensor can't be asked for it"
}
