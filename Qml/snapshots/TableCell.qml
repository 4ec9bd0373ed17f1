import QtQuick 2.15
import Varkel.Shell 1.0
import "../assembly"

// One line of text in a table; what does not fit shows in a tip.
BodyText {
    id: cell

    property string value
    property string hint: truncated ? text : ""

    rightPadding: Theme.gap
    elide: Text.ElideRight
    text: PlainText.line(value)
    Accessible.ignored: true

    HoverHandler {
        id: pointer
    }

    Hint {
        text: cell.hint
        shown: pointer.hovered
    }
}
