import QtQuick 2.15
import QtQuick.Layouts 1.15
import Varkel.Shell 1.0
import "../assembly"

// The bottom of the window: the connection, the current activity and the unsaved changes.
Rectangle {
    id: line

    property string model
    property var titles: []
    property string address
    property string serialNumber
    readonly property int edits: varkel_manager.edits.all.length

    property bool connecting: false
    property bool saving: false
    property string outcome // of the last operation
    property color outcomeColor: Theme.textMuted

    signal pageRequested(int page)
    signal logRequested

    function follow() {
        address = varkel_manager.connectType === 1 ? varkel_manager.serial_port_485 + ", " + varkel_manager.serial_port_232
                                                   : varkel_manager.ip_address + ":" + varkel_manager.port;
        var info = varkel_manager.ZeltoLidarInfo;
        serialNumber = varkel_manager.connectType === 0 ? varkel_manager.getLidarSN() : info.length > 0 ? info[0].value : "";
    }

    readonly property string sensor: [address, model].concat(serialNumber ? ["SN " + serialNumber] : []).join(", ")

    function activity() {
        if (varkel_manager.IsUpgrading) {
            return "Upgrading…";
        }
        if (varkel_manager.IsDownloadLog) {
            return "Downloading a log…";
        }
        if (connecting) {
            return "Connecting…";
        }
        if (varkel_manager.sensorReturn.isWaiting) {
            return "Waiting for the sensor…";
        }
        return saving ? "Saving…" : varkel_manager.isReadingPage ? "Reading…" : varkel_manager.isWorking ? "Asking…" : "";
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
            Layout.maximumWidth: line.width / 2
            color: Theme.textMuted
            elide: Text.ElideRight
            text: PlainText.line(varkel_manager.IsConnected ? "Connected to " + line.sensor : "Not connected")
        }

        BodyText {
            objectName: "statusActivity"
            visible: text.length > 0
            text: line.activity()
        }

        BodyText {
            objectName: "statusOutcome"
            Layout.fillWidth: true
            horizontalAlignment: Text.AlignRight
            color: line.outcomeColor
            elide: Text.ElideRight
            text: PlainText.line(line.outcome.replace(/\n[^]*/, ""))
        }

        FindingsButton {
            implicitHeight: Theme.statusButtonHeight
        }

        DefaultToolButton {
            objectName: "editsButton"
            visible: line.edits > 0
            implicitHeight: Theme.statusButtonHeight
            text: line.edits === 1 ? "1 change not saved" : line.edits + " changes not saved"
            hint: panel.visible ? "" : "Lists the changes on all pages"
            onClicked: panel.opened ? panel.close() : panel.open()

            EditsPanel {
                id: panel

                x: parent.width - width
                y: -height - Theme.gapSmall
                titles: line.titles
                onPageRequested: line.pageRequested(page)
            }
        }

        DefaultToolButton {
            objectName: "statusLogButton"
            implicitHeight: Theme.statusButtonHeight
            text: "Open log"
            quiet: true
            onClicked: line.logRequested()
        }
    }

    Connections {
        target: varkel_manager

        function onZeltoLidarInfoChanged() {
            line.follow();
        }

        function onIsConnectedChanged() {
            line.follow();
        }

        function onMyMapChanged() {
            line.follow();
        }
    }
}
