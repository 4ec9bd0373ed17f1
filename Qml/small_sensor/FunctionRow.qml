import QtQuick 2.15
import "../assembly"

// A row for one function of the sensor, with the outcome of its last call beside it. What it shows belongs to the
// current connection: `forget` is called when that ends or another model is selected.
LabelledRow {
    id: row

    property string name // used in the names of its controls
    property var said: ({}) // what to show when a call succeeds, by the call's name
    property string unread // shown until the first call
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
