import QtQuick 2.15
import "."

// A thin moving bar, visible while the tool waits; short waits do not show it.
Item {
    id: loading

    property bool running: false

    implicitHeight: Theme.busyHeight
    clip: true
    visible: false

    Accessible.role: Accessible.ProgressBar
    Accessible.name: "Busy"
    Accessible.ignored: !visible

    onRunningChanged: {
        if (!running) {
            visible = false;
        }
    }

    Timer {
        interval: Theme.blink
        running: loading.running
        onTriggered: loading.visible = true
    }

    Rectangle {
        id: sweep

        width: loading.width / 4
        height: parent.height
        color: Theme.accentPressed

        NumberAnimation on x {
            running: loading.visible
            loops: Animation.Infinite
            from: -sweep.width
            to: loading.width
            duration: Theme.sweep
            easing.type: Easing.InOutQuad
        }
    }
}
