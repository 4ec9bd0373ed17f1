import QtQuick 2.15
import QtQuick.Window 2.15
import "."

// What a Hint loads: its tooltip, open.
Item {
    id: place

    readonly property Item hint: parent

    // The pointer may rest on a control that is not in its window yet, or in none any more.
    function openInWindow() {
        if (Window.window !== null) {
            tip.open();
        }
    }

    // When complete, so that it heeds its delay.
    Component.onCompleted: Qt.callLater(openInWindow)
    // It is deleted a little later, and its delay may end before that.
    Component.onDestruction: tip.close()

    DefaultToolTip {
        id: tip

        text: place.hint ? place.hint.text : ""
        beside: place.hint ? place.hint.beside : false
    }
}
