import QtQuick 2.15
import QtQuick.Layouts 1.15
import "../assembly"

// Where to connect: network address and ports, or two serial ports.
RowLayout {
    id: fields

    readonly property int type: varkel_manager.connectType
    readonly property bool network: type !== 1
    readonly property bool serial: !network

    signal accepted

    // The controller reports once that its settings are read, and stores what is written back to it.
    function load() {
        ip.show(varkel_manager.ip_address);
        port.show(varkel_manager.port);
        udpPort.show(varkel_manager.udpPort);
        rs485.show(varkel_manager.serial_port_485);
        uart.show(varkel_manager.serial_port_232);
        baudRate.value = varkel_manager.baud_rate;
    }

    function finish() {
        ip.finish();
        port.finish();
        udpPort.finish();
        rs485.finish();
        uart.finish();
        baudRate.finish();
    }

    spacing: Theme.gapSmall
    Component.onCompleted: load()

    LabelledField {
        id: rs485

        fieldName: "rs485Field"
        visible: fields.serial
        text: "RS485 Serial Port:"
        fieldWidth: Theme.buttonWidth + Theme.gap
        onCommit: varkel_manager.serial_port_485 = text
        onAccepted: fields.accepted()
    }

    LabelledField {
        id: uart

        fieldName: "uartField"
        visible: fields.serial
        text: "UART Serial Port:"
        fieldWidth: Theme.buttonWidth + Theme.gap
        onCommit: varkel_manager.serial_port_232 = text
        onAccepted: fields.accepted()
    }

    AddressField {
        id: ip

        fieldName: "ipField"
        visible: fields.network
        text: "IPv4 Address:"
        fieldWidth: Theme.buttonWidth + 2 * Theme.gap
        onCommit: varkel_manager.ip_address = text
        onAccepted: fields.accepted()
    }

    LabelledField {
        id: port

        fieldName: "portField"
        visible: fields.network
        text: "KTC/KTCS Port:"
        fieldWidth: Theme.buttonWidth
        onCommit: varkel_manager.port = text
        onAccepted: fields.accepted()
    }

    LabelledField {
        id: udpPort

        fieldName: "udpPortField"
        visible: fields.network
        text: "Udp Port:"
        fieldWidth: Theme.buttonWidth - Theme.gapLarge
        onCommit: {
            varkel_manager.udpPort = text;
            show(varkel_manager.udpPort);
        }
        onAccepted: fields.accepted()
    }

    BaudRateField {
        id: baudRate

        onCommit: {
            varkel_manager.baud_rate = text;
            value = varkel_manager.baud_rate;
        }
        onAccepted: fields.accepted()
    }

    Connections {
        target: varkel_manager

        function onInitInfoChanged() {
            fields.load();
        }
    }
}
