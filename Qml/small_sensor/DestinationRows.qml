import QtQuick 2.15
import QtQuick.Layouts 1.15
import "../assembly"

// Where the sensor sends its points; read again whenever the connection or the model changes.
Column {
    id: destination

    property string selectedModel

    // A function, because a binding might not be updated yet when a handler runs.
    function isOffered() {
        return selectedModel === "Zelto-KTC" || selectedModel === "Marvo-KTC";
    }

    function refresh() {
        if (isOffered() && varkel_manager.IsConnected) {
            varkel_manager.smallSensor.readDestination(true); // silent: the user did not ask for it
        } else {
            ip.forget();
            port.forget();
        }
    }

    function put(ipText, portText) {
        ip.show(ipText);
        port.show(portText);
    }

    // A text that is not a number becomes a value that the function refuses with its own message.
    function portNumber() {
        return /^\d{1,5}$/.test(port.text) ? Number(port.text) : -1;
    }

    visible: isOffered()
    onSelectedModelChanged: refresh()

    LabelledRow {
        width: destination.width
        text: "Destination"

        ControlCaption {
            text: "Destination IP"
        }

        SettingField {
            id: ip

            objectName: "zeltoDestinationIpField"
            Accessible.name: "Destination IP"
            hint: "IPv4 address that the sensor sends its points to"
        }
    }

    FunctionRow {
        width: destination.width
        name: "zeltoDestination"
        said: ({ "readDestination": "Read", "setDestination": "Saved" })

        ControlCaption {
            text: "UDP Port"
        }

        SettingField {
            id: port

            objectName: "zeltoDestinationPortField"
            Accessible.name: "UDP Port"
            hint: "Port that the sensor sends its points to"
        }

        SaveButton {
            objectName: "zeltoDestinationSave"
            onClicked: varkel_manager.smallSensor.setDestination(ip.text, destination.portNumber())
        }
    }

    Connections {
        target: varkel_manager

        function onIsConnectedChanged() {
            destination.refresh();
        }

        function onConnectTypeChanged() {
            destination.refresh();
        }
    }

    Connections {
        target: varkel_manager.smallSensor

        function onDestinationRead(ipAndPort) {
            if (!destination.isOffered() || !varkel_manager.IsConnected) {
                return;
            }
            if (ipAndPort.length >= 2) {
                destination.put(ipAndPort[0], ipAndPort[1]);
            } else {
                destination.put("xx.xx.xx.xx", "xx");
            }
        }
    }
}
