import QtQuick 2.15
import QtQuick.Window 2.15
import "."

// Loaded by a Hint: its tooltip, open.
Item {
    id: place

    readonly property Item hint: parent

    // The control under the pointer may not be in its window yet, or no longer be in one.
    function openInWindow() {
        if (Window.window !== null) {
            tip.open();
        }
    }

    // Only when complete, so that the delay applies.
    Component.onCompleted: Qt.callLater(openInWindow)
    // It is deleted a little later, and the delay may end before that.
    Component.onDestruction: tip.close()

    DefaultToolTip {
        id: tip

        text: place.hint ? place.hint.text : ""
        beside: place.hint ? place.hint.beside : false
    }
}
