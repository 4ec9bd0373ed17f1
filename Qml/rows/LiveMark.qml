import QtQuick 2.15
import "../assembly"

// Marks a row whose value follows the sensor.
Item {
    Accessible.role: Accessible.Indicator
    Accessible.name: "live"

    Rectangle {
        anchors.verticalCenter: parent.verticalCenter
        width: Theme.dot
        height: Theme.dot
        radius: width / 2
        color: Theme.connected
    }

    BodyText {
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        color: Theme.textFaint
        font.pixelSize: Theme.fontSmall
        text: "live"
        Accessible.ignored: true
    }
}
