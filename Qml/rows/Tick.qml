import QtQuick 2.15
import "../assembly"

// A tick, drawn because not every font has one.
Item {
    id: tick

    implicitWidth: Theme.tick
    implicitHeight: Theme.tick

    Rectangle {
        x: tick.width * 0.08
        y: tick.height * 0.58
        width: tick.width * 0.4
        height: Theme.tickStroke
        radius: height / 2
        rotation: 45
        color: Theme.success
    }

    Rectangle {
        x: tick.width * 0.25
        y: tick.height * 0.45
        width: tick.width * 0.78
        height: Theme.tickStroke
        radius: height / 2
        rotation: -50
        color: Theme.success
    }
}
