import QtQuick 2.15
import "."

// The tooltip of the control that it fills; made only while the pointer rests there, as pages have hundreds.
Loader {
    id: hint

    property string text
    property bool shown: false

    anchors.fill: parent
    active: shown && text.length > 0

    sourceComponent: Item {
        DefaultToolTip {
            text: hint.text
            visible: true
        }
    }
}
