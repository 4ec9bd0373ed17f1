import QtQuick 2.15
import QtQuick.Templates 2.15 as T
import "."

T.MenuItem {
    id: item

    implicitWidth: 2 * Theme.buttonWidth
    implicitHeight: Theme.menuItemHeight
    leftPadding: Theme.gap
    rightPadding: Theme.gap
    hoverEnabled: true
    opacity: enabled ? 1 : Theme.disabledOpacity

    Accessible.role: Accessible.MenuItem
    Accessible.name: text

    contentItem: BodyText {
        text: item.text
        color: item.down ? Theme.accentPressedText : item.highlighted ? Theme.accentText : Theme.text
        elide: Text.ElideRight
        Accessible.ignored: true
    }

    background: Rectangle {
        color: item.down ? Theme.accentPressed : item.highlighted ? Theme.accent : "transparent"
        radius: Theme.radius
    }
}
