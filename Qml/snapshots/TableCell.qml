import QtQuick 2.15
import Varkel.Shell 1.0
import "../assembly"

// One line of text in a table; a text that does not fit is shown in a tooltip.
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
