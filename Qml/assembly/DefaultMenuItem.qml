import QtQuick 2.15
import QtQuick.Templates 2.15 as T
import "."

T.MenuItem {
    id: item

    property string reason // why it can't be chosen now

    implicitWidth: Theme.menuWidth
    implicitHeight: Theme.menuItemHeight
    leftPadding: Theme.gap
    rightPadding: Theme.gap
    hoverEnabled: true
    enabled: reason.length === 0
    opacity: enabled ? 1 : Theme.disabledOpacity

    Accessible.role: Accessible.MenuItem
    Accessible.name: text

    contentItem: BodyText {
        text: item.reason.length > 0 ? item.text + ", " + item.reason : item.text
        color: item.down ? Theme.accentPressedText : item.highlighted ? Theme.accentText : Theme.text
        elide: Text.ElideRight
        Accessible.ignored: true
    }

    background: Rectangle {
        color: item.down ? Theme.accentPressed : item.highlighted ? Theme.accent : "transparent"
        radius: Theme.radius
    }
}
