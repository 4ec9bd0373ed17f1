import QtQuick 2.15
import QtQuick.Templates 2.15 as T
import "."

// A check box. Its text is only for screen readers.
T.CheckBox {
    id: box

    property string hint

    implicitWidth: Theme.checkSize + leftPadding + rightPadding
    implicitHeight: Theme.controlHeight
    leftPadding: Theme.gapSmall
    rightPadding: Theme.gapSmall
    hoverEnabled: true
    opacity: enabled ? 1 : Theme.quietOpacity

    Accessible.role: Accessible.CheckBox
    Accessible.name: text
    Accessible.checked: checked
    Accessible.description: hint

    indicator: Rectangle {
        x: box.leftPadding
        y: (box.height - height) / 2
        width: Theme.checkSize
        height: Theme.checkSize
        radius: Theme.radius
        color: box.checkState !== Qt.Unchecked ? Theme.accent : box.enabled ? Theme.field : "transparent"
        border.width: box.visualFocus ? 2 * Theme.line : Theme.line
        border.color: box.visualFocus ? Theme.text : box.hovered ? Theme.borderHover : Theme.border

        BodyText {
            anchors.centerIn: parent
            visible: box.checkState !== Qt.Unchecked
            font.pixelSize: Theme.fontSmall
            text: box.checkState === Qt.PartiallyChecked ? "–" : "✓"
            Accessible.ignored: true
        }
    }

    contentItem: null

    Hint {
        text: box.hint
        shown: box.hovered
    }
}
