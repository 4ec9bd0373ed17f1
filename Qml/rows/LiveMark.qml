import QtQuick 2.15
import "../assembly"

// Marks a row whose value follows the sensor.
Item {
    id: mark

    property bool shown: false

    implicitWidth: Theme.dot + Theme.gapTiny + caption.implicitWidth

    Accessible.role: Accessible.Indicator
    Accessible.name: "live"
    Accessible.ignored: !shown

    Rectangle {
        anchors.verticalCenter: parent.verticalCenter
        width: Theme.dot
        height: Theme.dot
        radius: width / 2
        visible: mark.shown
        opacity: varkel_manager.IsConnected ? 1 : Theme.disabledOpacity
        color: varkel_manager.IsConnected ? Theme.connected : Theme.textFaint
    }

    BodyText {
        id: caption

        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        visible: mark.shown
        color: Theme.textFaint
        font.pixelSize: Theme.fontSmall
        text: "live"
        Accessible.ignored: true
    }
}
