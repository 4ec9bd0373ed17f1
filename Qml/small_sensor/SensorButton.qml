import QtQuick 2.15
import "../assembly"

// A button that sends something to the sensor. It is disabled while the sensor is busy with another call, and dims
// slowly, so that a quick answer does not make the page flicker. Its hint is only for screen readers: a tooltip would
// cover the outcome beside it or the button of the next row.
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
