import QtQuick 2.15
import QtQuick.Templates 2.15 as T
import "."

T.ScrollBar {
    id: bar

    implicitWidth: Theme.scrollBarWidth + 2 * padding
    implicitHeight: Theme.scrollBarWidth + 2 * padding
    padding: 2 * Theme.line
    minimumSize: 0.06
    hoverEnabled: true
    visible: size < 1

    contentItem: Rectangle {
        radius: Theme.scrollBarWidth / 2
        implicitWidth: Theme.scrollBarWidth
        implicitHeight: Theme.scrollBarWidth
        color: bar.pressed || bar.hovered ? Theme.buttonPressed : Theme.buttonHover
    }
}
