import QtQuick 2.15
import "."

// Asks the sensor for something. It rests while the sensor is busy with another call, and dims so slowly that a
// quick answer does not make the page flicker.
DefaultToolButton {
    enabled: !varkel_manager.isWorking

    Behavior on opacity {
        NumberAnimation {
            duration: Theme.blink
        }
    }
}
