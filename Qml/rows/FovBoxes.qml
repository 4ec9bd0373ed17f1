import QtQuick 2.15
import QtQuick.Layouts 1.15
import "../assembly"

// Five start angles over five end angles, in degrees.
GridLayout {
    id: grid

    property string place
    property var angles: []
    property bool editable: true
    property bool dimmed: false

    signal angleCommitted(int index, string text)
    signal undone
    signal redone

    columns: 6
    columnSpacing: Theme.gapTiny
    rowSpacing: Theme.gapSmall

    Repeater {
        model: 12

        Loader {
            readonly property bool caption: index % 6 === 0
            readonly property int angle: Math.floor(index / 6) * 5 + index % 6 - 1

            Layout.fillWidth: !caption
            Layout.preferredWidth: caption ? -1 : Theme.rowHeight
            sourceComponent: caption ? captionText : box
        }
    }

    Component {
        id: captionText

        BodyText {
            color: Theme.textMuted
            text: parent && parent.angle < 0 ? "Start" : "End"
        }
    }

    Component {
        id: box

        DefaultTextField {
            readonly property int angle: parent ? parent.angle : 0
            readonly property string angleText: grid.angles.length > angle ? grid.angles[angle] : ""
            readonly property color tone: Theme.sectors[angle % 5]

            objectName: "fov_" + grid.place + "_" + angle
            Accessible.name: (angle < 5 ? "Start " : "End ") + (angle % 5 + 1)
            leftPadding: Theme.gapTiny
            rightPadding: Theme.gapTiny
            readOnly: !grid.editable
            dimmed: grid.dimmed
            inputMethodHints: Qt.ImhFormattedNumbersOnly
            hint: (angle < 5 ? "Start" : "End") + " of sector " + (angle % 5 + 1) + ", 0.0 to 360.0 degrees"
            onAngleTextChanged: show(angleText)
            onCommit: {
                grid.angleCommitted(angle, text);
                show(angleText);
            }
            onUndone: grid.undone()
            onRedone: grid.redone()
            Component.onCompleted: show(angleText)

            Rectangle {
                x: Theme.gapTiny
                width: parent.width - 2 * x
                height: 2 * Theme.line
                anchors.bottom: parent.bottom
                color: parent.tone
            }
        }
    }
}
