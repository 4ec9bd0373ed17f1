import QtQuick 2.15
import "."

// What a Hint loads: its tooltip, open.
Item {
    id: place

    readonly property Item hint: parent

    DefaultToolTip {
        text: place.hint ? place.hint.text : ""
        beside: place.hint ? place.hint.beside : false

        // Opened when complete, so that it heeds its delay.
        Component.onCompleted: open()
    }
}
