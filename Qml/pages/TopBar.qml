import QtQuick 2.15
import "../assembly"

// The top of the window: its name and, once filled, the connection.
Rectangle {
    id: bar

    readonly property string model: connection.item ? connection.item.model : ""
    readonly property bool complete: connection.item !== null

    signal connectRequested
    signal modelChosen(string name)
    signal restartRequested
    signal resetRequested
    signal aboutRequested

    function fill() {
        connection.source = "ConnectionBar.qml";
    }

    function pressConnect() {
        connection.item.pressConnect();
    }

    function selectModel(name) {
        connection.item.selectModel(name);
    }

    function takeFocus() {
        connection.item.takeFocus();
    }

    implicitHeight: Theme.topBarHeight
    color: Theme.bar

    Accessible.role: Accessible.ToolBar
    Accessible.name: "Connection"

    BodyText {
        id: title

        anchors.left: parent.left
        anchors.leftMargin: Theme.gapLarge
        anchors.bottom: parent.bottom
        anchors.bottomMargin: Theme.topBarInset
        height: Theme.controlHeight
        text: "Varkel"
        font.pixelSize: Theme.fontTitle
        font.bold: true
        Accessible.role: Accessible.Heading
    }

    Loader {
        id: connection

        anchors.left: title.right
        anchors.leftMargin: Theme.gap + Theme.gapSmall
        anchors.right: parent.right
        anchors.rightMargin: Theme.gapLarge
        anchors.top: parent.top
        anchors.bottom: parent.bottom
        anchors.bottomMargin: Theme.topBarInset
    }

    Connections {
        target: connection.item

        function onConnectRequested() {
            bar.connectRequested();
        }

        function onModelChosen(name) {
            bar.modelChosen(name);
        }

        function onRestartRequested() {
            bar.restartRequested();
        }

        function onResetRequested() {
            bar.resetRequested();
        }

        function onAboutRequested() {
            bar.aboutRequested();
        }
    }

    Rectangle {
        anchors.bottom: parent.bottom
        width: parent.width
        height: Theme.line
        color: Theme.hairline
    }
}
