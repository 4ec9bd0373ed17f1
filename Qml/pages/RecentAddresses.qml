import QtQuick 2.15
import QtQuick.Templates 2.15 as T
import Varkel.Shell 1.0
import "../assembly"

// The recent addresses, below the field, which keeps the focus and forwards its keys.
T.Popup {
    id: popup

    property var addresses: []
    readonly property string current: addresses[list.currentIndex] || ""

    signal chosen(string text)

    function step(by) {
        list.currentIndex = Math.max(0, Math.min(list.count - 1, list.currentIndex + by));
    }

    objectName: "recentAddresses"
    width: Theme.menuWidth
    implicitHeight: Math.min(Theme.popupHeight, list.contentHeight + topPadding + bottomPadding)
    padding: Theme.gapTiny
    margins: Theme.gapSmall
    focus: false
    closePolicy: T.Popup.CloseOnPressOutsideParent
    onAboutToShow: list.currentIndex = 0
    onAddressesChanged: {
        if (addresses.length === 0) {
            close();
        }
    }

    background: Rectangle {
        color: Theme.button
        border.color: Theme.borderHover
        radius: Theme.radius
    }

    contentItem: ListView {
        id: list

        clip: true
        model: popup.addresses
        boundsBehavior: Flickable.StopAtBounds
        highlightMoveDuration: 0
        T.ScrollBar.vertical: DefaultScrollBar {}
        Accessible.role: Accessible.List
        Accessible.name: "Recent addresses"

        delegate: Rectangle {
            id: entry

            readonly property bool current: ListView.isCurrentItem

            objectName: "recentAddress_" + index
            width: list.width
            height: Theme.rowHeight - Theme.gapTiny
            color: current ? Theme.accent : "transparent"
            radius: Theme.radius
            Accessible.role: Accessible.ListItem
            Accessible.name: text.text
            Accessible.onPressAction: popup.chosen(modelData)

            BodyText {
                id: text

                anchors.fill: parent
                anchors.leftMargin: Theme.gapSmall
                anchors.rightMargin: remove.width
                text: PlainText.line(modelData)
                color: entry.current ? Theme.accentText : Theme.text
                elide: Text.ElideMiddle
                Accessible.ignored: true
            }

            MouseArea {
                anchors.fill: parent
                hoverEnabled: true
                onEntered: list.currentIndex = index
                onClicked: popup.chosen(modelData)
            }

            DefaultToolButton {
                id: remove

                objectName: "removeAddress_" + index
                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                implicitHeight: Theme.statusButtonHeight
                focusPolicy: Qt.NoFocus
                quiet: true
                text: "Remove"
                Accessible.name: "Remove " + modelData
                onClicked: varkel_manager.recentAddresses.remove(modelData)
            }
        }
    }
}
