import QtQuick 2.15
import "."

// Starts and stops a recording; a dot blinks while it runs.
DefaultToolButton {
    id: button

    property bool recording: false
    readonly property real implicitTextWidth: contentItem.implicitWidth + leftPadding + rightPadding

    text: recording ? "Stop recording" : "Record…"
    hint: recording ? "Stops recording exchanges"
                    : "Writes all exchanges with the sensor to a file that Wireshark opens"
    leftPadding: Theme.gap + (recording ? dot.width + Theme.gapTiny : 0)

    Rectangle {
        id: dot

        x: Theme.gap
        anchors.verticalCenter: parent.verticalCenter
        width: Theme.gapSmall
        height: width
        radius: width / 2
        color: Theme.error
        visible: button.recording

        SequentialAnimation on opacity {
            running: dot.visible
            loops: Animation.Infinite
            NumberAnimation { to: 0.2; duration: 10 * Theme.quick }
            NumberAnimation { to: 1; duration: 10 * Theme.quick }
        }
    }
}
