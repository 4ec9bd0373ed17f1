import QtQuick 2.15

// A function of the sensor that answers with something, called so that the window does not wait. While several
// calls are under way only the answer to the last one is reported.
Item {
    id: call

    property string operation
    property int pending: 0

    signal answered(var result)

    function start(callArguments) {
        ++pending;
        varkel_manager.CallInBackground(operation, callArguments);
    }

    visible: false // takes no place in a row

    Connections {
        target: varkel_manager

        function onCallFinished(operation, result) {
            if (operation !== call.operation || call.pending === 0) {
                return;
            }
            --call.pending;
            if (call.pending === 0) {
                call.answered(result);
            }
        }
    }
}
