import QtQuick 2.15
import QtQuick.Templates 2.15 as T
import "."

T.ToolTip {
    id: tip

    x: 0
    y: parent ? parent.height + Theme.gapTiny : 0
    implicitWidth: Math.min(Theme.hintWidth, words.implicitWidth + leftPadding + rightPadding)
    implicitHeight: words.implicitHeight + topPadding + bottomPadding
    padding: Theme.gapSmall
    margins: Theme.gapTiny
    delay: Theme.hintDelay
    closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutsideParent

    contentItem: BodyText {
        id: words

        text: tip.text
        font.pixelSize: Theme.fontSmall
        wrapMode: Text.Wrap
    }

    background: Rectangle {
        color: Theme.base
        border.color: Theme.border
        radius: Theme.radius
    }
}
