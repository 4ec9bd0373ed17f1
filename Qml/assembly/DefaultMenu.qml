import QtQuick 2.15
import QtQuick.Templates 2.15 as T
import "."

T.Menu {
    id: menu

    implicitWidth: Theme.menuWidth
    implicitHeight: contentItem.implicitHeight + topPadding + bottomPadding
    padding: Theme.gapTiny
    margins: Theme.gapSmall
    overlap: 1

    delegate: DefaultMenuItem {}

    contentItem: ListView {
        implicitHeight: contentHeight
        model: menu.contentModel
        interactive: false
        currentIndex: menu.currentIndex
    }

    background: Rectangle {
        color: Theme.button
        border.color: Theme.borderHover
        radius: Theme.radius
    }
}
