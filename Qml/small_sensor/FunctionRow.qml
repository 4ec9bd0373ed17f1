import QtQuick 2.15
import "../assembly"

// A row for one thing that the sensor can be set to or asked for; the outcome of the last call is shown beside it.
// What the row shows is of this connection: `forget` comes when it ends or another model is chosen.
LabelledRow {
    id: row

    property string name // of its controls
    property var said: ({}) // of each of the row's calls: what is said of it when it went well
    property string unread // said until the first call
    property alias outcome: note.outcome

    signal succeeded(string call)
    signal forget

    function say(text, failed) {
        note.failed = failed;
        note.outcome = text;
    }

    function time() {
        return new Date().toLocaleTimeString(Qt.locale("C"), "hh:mm:ss");
    }

    onForget: say(unread, false)
    Component.onCompleted: say(unread, false)

    OutcomeNote {
        id: note

        objectName: row.name + "Outcome"
        parent: row
        x: row.width + Theme.gap
        height: row.height
    }

    Connections {
        target: varkel_manager.smallSensor

        function onFinished(call, fault) {
            if (row.said[call] === undefined) {
                return;
            }
            if (fault === "") {
                row.succeeded(call);
            }
            row.say(fault === "" ? row.said[call] + " " + row.time() : fault, fault !== "");
        }
    }

    Connections {
        target: varkel_manager

        function onIsConnectedChanged() {
            if (!varkel_manager.IsConnected) {
                row.forget();
            }
        }

        function onLidarClearModel() {
            row.forget();
        }
    }
}
