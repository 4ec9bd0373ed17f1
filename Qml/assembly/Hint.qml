import QtQuick 2.15
import "."

// The tooltip of the control that it fills, below or beside it. It is loaded only while the pointer is there, because
// pages have hundreds of them.
Loader {
    id: hint

    property string text
    property bool shown: false
    property bool beside: false

    anchors.fill: parent
    active: shown && text.length > 0
    source: "HintPlace.qml"
}
