import QtQuick 2.15
import "."

// A progress bar with its percentage; `ratio` runs from 0 to 1.
Item {
    id: progress

    property real ratio: 0
    readonly property string text: (100 * ratio).toFixed(2) + "%"
    readonly property color fillColor: ratio >= 1 ? Theme.progressDone : Theme.progress

    implicitHeight: Theme.controlHeight

    Accessible.role: Accessible.ProgressBar
    Accessible.name: text

    Rectangle {
        id: groove

        anchors.left: parent.left
        anchors.right: percent.left
        anchors.rightMargin: Theme.gap
        anchors.verticalCenter: parent.verticalCenter
        height: Theme.progressHeight
        radius: height / 2
        color: Theme.button

        Rectangle {
            width: Math.max(parent.height, parent.width * progress.ratio)
            height: parent.height
            radius: parent.radius
            visible: progress.ratio > 0
            color: progress.fillColor
        }
    }

    BodyText {
        id: percent

        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        width: 64
        horizontalAlignment: Text.AlignRight
        text: progress.text
        Accessible.ignored: true
    }
}
