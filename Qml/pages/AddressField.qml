import QtQuick 2.15
import "../assembly"

// The sensor's address, with a list of recent ones that opens with Down or the arrow. The field can be typed in while
// the list is open.
LabelledField {
    id: address

    readonly property var recent: varkel_manager.recentAddresses.all
    readonly property bool offered: recent.length > 0 && !field.readOnly

    keyTakers: [keys]

    function choose(text) {
        list.close();
        field.forceActiveFocus(Qt.OtherFocusReason);
        field.text = text;
        field.finish();
    }

    function open() {
        field.forceActiveFocus(Qt.OtherFocusReason);
        list.open();
    }

    // The open list handles keys before the field does.
    Item {
        id: keys

        parent: address.field
        Keys.onPressed: {
            if (!list.opened) {
                if (event.key === Qt.Key_Down && address.offered) {
                    address.open();
                    event.accepted = true;
                }
                return;
            }
            event.accepted = true;
            switch (event.key) {
            case Qt.Key_Down:
                list.step(1);
                break;
            case Qt.Key_Up:
                list.step(-1);
                break;
            case Qt.Key_Return:
            case Qt.Key_Enter:
                address.choose(list.current);
                break;
            case Qt.Key_Delete:
                varkel_manager.recentAddresses.remove(list.current);
                break;
            case Qt.Key_Escape:
                list.close();
                break;
            default:
                list.close();
                event.accepted = false;
            }
        }
    }

    Binding {
        target: address.field
        property: "rightPadding"
        value: address.offered ? arrow.width : Theme.gapSmall
    }

    Item {
        id: arrow

        objectName: "recentAddressesButton"
        parent: address.field
        anchors.right: parent.right
        width: Theme.gapLarge
        height: parent.height
        visible: address.offered
        Accessible.role: Accessible.Button
        Accessible.name: "Recent addresses"
        Accessible.onPressAction: address.open()

        DownArrow {
            anchors.centerIn: parent
        }

        MouseArea {
            anchors.fill: parent
            cursorShape: Qt.ArrowCursor
            onClicked: list.opened ? list.close() : address.open()
        }
    }

    RecentAddresses {
        id: list

        parent: address.field
        y: parent.height + Theme.gapTiny / 2
        addresses: address.recent
        onChosen: address.choose(text)
    }

    Connections {
        target: address.field

        function onActiveFocusChanged() {
            if (!address.field.activeFocus) {
                list.close();
            }
        }
    }
}
