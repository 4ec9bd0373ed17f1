import QtQuick 2.15
import "."

// Underlines an edited value; the frame around a field shows the focus.
Rectangle {
    anchors.bottom: parent.bottom
    anchors.bottomMargin: Theme.gapTiny
    x: Theme.gapSmall
    width: parent.width - 2 * x
    height: 2 * Theme.line
    color: Theme.mark
}
