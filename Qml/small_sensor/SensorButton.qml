import QtQuick 2.15
import "../assembly"

// Asks the sensor for something. It rests while the sensor is busy with another call, and dims so slowly that a
// quick answer does not make the page flicker. Only screen readers get its hint: a tip would cover the
// outcome beside it or the button of the next row.
DefaultToolButton {
    property string tip

    enabled: !varkel_manager.isWorking
    Accessible.description: tip

    Behavior on opacity {
        NumberAnimation {
            duration: Theme.blink
        }
    }
}
