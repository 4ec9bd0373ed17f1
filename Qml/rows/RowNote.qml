import QtQuick 2.15
import "../assembly"

// The state of a row's value: a tick if it was saved and read back, otherwise a few words.
Item {
    id: note

    property string text
    property bool ticked: false
    property color tone: Theme.textMuted

    implicitWidth: words.implicitWidth

    Accessible.role: Accessible.StaticText
    Accessible.name: ticked ? "Saved and read back" : text

    Loader {
        anchors.verticalCenter: parent.verticalCenter
        active: note.ticked
        source: "Tick.qml"
    }

    BodyText {
        id: words

        anchors.fill: parent
        text: note.text
        color: note.tone
        font.pixelSize: Theme.fontSmall
        elide: Text.ElideRight
        Accessible.ignored: true
    }
}
