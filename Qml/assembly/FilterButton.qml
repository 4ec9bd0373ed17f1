import QtQuick 2.15
import QtQuick.Templates 2.15 as T
import "."

// A small toggle in a colour of its own.
T.AbstractButton {
    id: filter

    property color tone: Theme.text

    checkable: true
    implicitWidth: label.implicitWidth + 2 * Theme.gap
    implicitHeight: Theme.controlHeight
    leftPadding: Theme.gap
    rightPadding: Theme.gap
    hoverEnabled: true
    focusPolicy: Qt.StrongFocus

    Accessible.role: Accessible.CheckBox
    Accessible.name: text
    Accessible.checked: checked

    contentItem: BodyText {
        id: label

        text: filter.text
        color: filter.checked ? filter.tone : Theme.textFaint
        horizontalAlignment: Text.AlignHCenter
        Accessible.ignored: true
    }

    background: Rectangle {
        radius: height / 2
        color: filter.checked || filter.hovered ? Theme.raised : "transparent"
        border.width: filter.visualFocus ? 2 * Theme.line : Theme.line
        border.color: filter.visualFocus ? Theme.borderFocus
                                         : filter.checked ? Theme.borderHover : Theme.border
    }
}
