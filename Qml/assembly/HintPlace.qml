import QtQuick 2.15
import QtQuick.Window 2.15
import "."

// What a Hint loads: its tooltip, opened once it is complete and in a window, so that it heeds its delay.
Item {
    id: place

    readonly property Item hint: parent
    readonly property bool ready: complete && Window.window !== null
    property bool complete: false

    onReadyChanged: {
        if (ready) {
            tip.open();
        }
    }

    DefaultToolTip {
        id: tip

        text: place.hint ? place.hint.text : ""
        beside: place.hint ? place.hint.beside : false
    }

    Component.onCompleted: complete = true
}
