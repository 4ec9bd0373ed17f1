import QtQuick 2.15
import "."

// The arrow of a control that drops down. It is drawn as two strokes: the program's own font has no such glyph, and a
// canvas for each would delay start-up.
Item {
    id: arrow

    readonly property real thickness: 1.5

    width: Theme.gapSmall + 2
    height: Theme.gapTiny + 2

    Rectangle {
        x: 1
        y: 1 - height / 2
        width: (arrow.width / 2 - 1) * Math.SQRT2
        height: arrow.thickness
        transformOrigin: Item.Left
        rotation: 45
        color: Theme.textMuted
        antialiasing: true
    }

    Rectangle {
        x: arrow.width - 1
        y: 1 - height / 2
        width: (arrow.width / 2 - 1) * Math.SQRT2
        height: arrow.thickness
        transformOrigin: Item.Left
        rotation: 135
        color: Theme.textMuted
        antialiasing: true
    }
}
