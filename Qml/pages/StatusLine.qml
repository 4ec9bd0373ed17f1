import QtQuick 2.15
import QtQuick.Layouts 1.15
import Varkel.Shell 1.0
import "../assembly"

// The foot of the window: the connection in words and the changes that wait.
Rectangle {
    id: line

    property string model
    property var titles: []
    property string address
    property string serialNumber
    readonly property int edits: varkel_manager.edits.all.length

    signal pageRequested(int page)

    function follow() {
        address = varkel_manager.connectType === 1 ? varkel_manager.serial_port_485 + ", " + varkel_manager.serial_port_232
                                                   : varkel_manager.ip_address + ":" + varkel_manager.port;
        serialNumber = varkel_manager.connectType === 0 ? varkel_manager.getLidarSN() : "";
    }

    function connection() {
        if (!varkel_manager.IsConnected) {
            return "Not connected";
        }
        return "Connected to " + [address, model].concat(serialNumber ? ["SN " + serialNumber] : []).join(", ");
    }

    implicitHeight: Theme.statusHeight
    color: Theme.bar

    Accessible.role: Accessible.StatusBar
    Accessible.name: "Status"

    Component.onCompleted: follow()

    Rectangle {
        width: parent.width
        height: Theme.line
        color: Theme.hairline
    }

    RowLayout {
        anchors.fill: parent
        anchors.leftMargin: Theme.gapLarge
        anchors.rightMargin: Theme.gapSmall
        spacing: Theme.gapLarge

        BodyText {
            objectName: "statusConnection"
            Layout.fillWidth: true
            color: Theme.textMuted
            elide: Text.ElideRight
            text: PlainText.line(line.connection())
        }

        DefaultToolButton {
            objectName: "editsButton"
            visible: line.edits > 0
            implicitHeight: Theme.statusButtonHeight
            text: line.edits === 1 ? "1 change not saved" : line.edits + " changes not saved"
            hint: "Lists the changes of all pages"
            onClicked: panel.opened ? panel.close() : panel.open()

            EditsPanel {
                id: panel

                x: parent.width - width
                y: -height - Theme.gapSmall
                titles: line.titles
                onPageRequested: line.pageRequested(page)
            }
        }
    }

    Connections {
        target: varkel_manager

        function onIsConnectedChanged() {
            line.follow();
        }

        function onMyMapChanged() {
            line.follow();
        }
    }
}
