import QtQuick 2.15
import Varkel.Shell 1.0
import "../assembly"

// Beside a row: the outcome of its last call.
BodyText {
    id: note

    property string outcome
    property bool failed: false

    width: Math.min(Theme.noteWidth, Math.max(0, parent.width / Theme.rowShare - parent.width - 2 * Theme.margin))
    text: PlainText.line(outcome)
    color: failed ? Theme.error : Theme.textMuted
    font.pixelSize: Theme.fontSmall
    wrapMode: Text.Wrap
    maximumLineCount: 2
    elide: Text.ElideRight
}
