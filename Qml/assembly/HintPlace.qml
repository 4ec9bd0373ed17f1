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

    // The pointer may rest on a control that is not in its window yet, or no more.
    function openInWindow() {
        if (Window.window !== null) {
            tip.open();
        }
    }

    // When complete, so that it heeds its delay.
    Component.onCompleted: Qt.callLater(openInWindow)

    DefaultToolTip {
        id: tip

        text: place.hint ? place.hint.text : ""
        beside: place.hint ? place.hint.beside : false
    }

    Component.onCompleted: complete = true
}
