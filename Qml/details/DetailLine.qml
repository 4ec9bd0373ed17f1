import QtQuick 2.15
import Varkel.Shell 1.0
import "../assembly"

// A caption and a property of the variable; hidden when the property is empty.
Item {
    id: line

    property string caption
    property string text

    implicitHeight: visible ? shown.implicitHeight + Theme.gapSmall : 0
    visible: text.length > 0

    Accessible.role: Accessible.StaticText
    Accessible.name: caption + ": " + shown.text

    BodyText {
        width: Theme.detailCaptionWidth - Theme.gapSmall
        color: Theme.textMuted
        text: line.caption
        elide: Text.ElideRight
        Accessible.ignored: true
    }

    BodyText {
        id: shown

        x: Theme.detailCaptionWidth
        width: parent.width - x
        text: PlainText.paragraph(line.text)
        wrapMode: Text.Wrap
        Accessible.ignored: true
    }
}
