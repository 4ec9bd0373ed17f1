import QtQuick 2.15
import QtQuick.Templates 2.15 as T
import Varkel.Shell 1.0
import "."

T.ToolTip {
    id: tip

    property bool beside: false

    x: beside && parent ? parent.width + Theme.gap : 0
    y: !parent ? 0 : beside ? (parent.height - height) / 2 : parent.height + Theme.gapTiny
    implicitWidth: Math.min(Theme.hintWidth, measured.implicitWidth + leftPadding + rightPadding)
    implicitHeight: words.implicitHeight + topPadding + bottomPadding
    padding: Theme.gapSmall
    margins: Theme.gapTiny
    delay: Theme.hintDelay
    closePolicy: T.Popup.CloseOnPressOutsideParent // Escape belongs to the field that is being edited

    // A wrapped text's implicit width is the width it was given.
    BodyText {
        id: measured

        visible: false
        text: words.text
        font: words.font
    }

    contentItem: BodyText {
        id: words

        text: PlainText.paragraph(tip.text)
        font.pixelSize: Theme.fontSmall
        wrapMode: Text.Wrap
    }

    background: Rectangle {
        color: Theme.base
        border.color: Theme.border
        radius: Theme.radius
    }
}
