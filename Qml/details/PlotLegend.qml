import QtQuick 2.15
import Varkel.Shell 1.0
import "../assembly"

// The legend of a curve: its colour, name and figures.
Item {
    id: legend

    property var summary: ({})
    property color colour
    readonly property string unit: PlainText.line(summary.unit || "")

    implicitHeight: figures.y + figures.height + Theme.gapTiny

    Rectangle {
        y: Theme.gapTiny
        width: Theme.dot
        height: Theme.dot
        color: legend.colour
    }

    BodyText {
        id: name

        x: Theme.dot + Theme.gapSmall
        width: parent.width - x
        text: PlainText.line(legend.summary.name || "") + (legend.unit.length > 0 ? " (" + legend.unit + ")" : "")
        elide: Text.ElideRight
    }

    BodyText {
        id: figures

        anchors.left: name.left
        anchors.top: name.bottom
        width: name.width
        color: Theme.textMuted
        font.pixelSize: Theme.fontSmall
        text: "min " + legend.summary.min + "   max " + legend.summary.max + "   mean " + legend.summary.mean
        elide: Text.ElideRight
    }
}
