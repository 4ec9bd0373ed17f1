import QtQuick 2.15
import "."

// The tooltip of the control that it fills, below or beside it; made only while the pointer rests
// there, as pages have hundreds.
Loader {
    id: hint

    property string text
    property bool shown: false
    property bool beside: false

    anchors.fill: parent
    active: shown && text.length > 0

    sourceComponent: Item {
        DefaultToolTip {
            text: hint.text
            beside: hint.beside

            // Opened when complete, so that it heeds its delay.
            Component.onCompleted: open()
        }
    }
}
