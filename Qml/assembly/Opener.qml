import QtQuick 2.15
import QtQuick.Templates 2.15 as T
import "."

// A small triangle that expands and collapses the details of a line.
T.AbstractButton {
    id: opener

    property bool open: false
    property string hint

    implicitWidth: Theme.fontHeading
    implicitHeight: Theme.fontHeading
    hoverEnabled: true

    Accessible.role: Accessible.Button
    Accessible.name: hint
    Accessible.onPressAction: opener.clicked()

    contentItem: BodyText {
        text: opener.open ? "\u25be" : "\u25b8"
        color: opener.hovered ? Theme.text : Theme.textMuted
        horizontalAlignment: Text.AlignHCenter
        Accessible.ignored: true
    }

    Hint {
        text: opener.hint
        shown: opener.hovered
    }
}
