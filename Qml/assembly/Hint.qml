import QtQuick 2.15
import "."

// The tooltip of the control that it fills, below or beside it; loaded only while the pointer rests
// there, as pages have hundreds.
Loader {
    id: hint

    property string text
    property bool shown: false
    property bool beside: false

    anchors.fill: parent
    active: shown && text.length > 0
    source: "HintPlace.qml"
}
