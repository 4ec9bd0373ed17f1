import QtQuick 2.15
import "../assembly"

// Watches a connection attempt and, once connected, checks periodically that the sensor still answers.
Item {
    id: watch

    property bool connecting: false
    readonly property bool idle: varkel_manager.IsConnected && !varkel_manager.IsUpgrading
                                 && !varkel_manager.IsDownloadLog && !varkel_manager.snapshots.applying

    signal lost

    Timer {
        id: checkTimer

        interval: Theme.connectionCheckInterval
        repeat: true
        running: varkel_manager.IsConnected
        onTriggered: {
            if (watch.idle) {
                varkel_manager.CheckConnectionInBackground();
            }
        }
    }

    // A failed attempt ends without a signal of its own.
    Timer {
        interval: Theme.blink
        repeat: true
        running: watch.connecting
        onTriggered: watch.connecting = varkel_manager.GetIsConnectingLidar()
    }

    Connections {
        target: varkel_manager

        function onIsConnectedChanged() {
            watch.connecting = false;
        }

        function onConnectionCheckFinished(alive) {
            if (!alive && watch.idle) {
                watch.lost();
            }
        }
    }
}
