import QtQuick 2.15
import QtQuick.Templates 2.15 as T
import "."

// A push button; `primary` marks the most likely action of a group.
T.ToolButton {
    id: button

    property bool primary: false
    property bool quiet: false
    property string hint

    implicitWidth: Math.max(Theme.buttonWidth, label.implicitWidth + leftPadding + rightPadding)
    implicitHeight: Theme.controlHeight
    leftPadding: Theme.gap
    rightPadding: Theme.gap
    hoverEnabled: true
    focusPolicy: Qt.StrongFocus
    opacity: enabled ? 1 : Theme.disabledOpacity

    Accessible.role: Accessible.Button
    Accessible.name: text
    Accessible.description: hint
    Accessible.onPressAction: button.clicked()

    Keys.onReturnPressed: button.clicked()
    Keys.onEnterPressed: button.clicked()

    contentItem: BodyText {
        id: label

        text: button.text
        color: !button.primary ? Theme.text : button.pressed ? Theme.accentPressedText : Theme.accentText
        horizontalAlignment: Text.AlignHCenter
        elide: Text.ElideRight
    }

    background: Rectangle {
        color: {
            if (button.primary) {
                return button.pressed ? Theme.accentPressed
                                      : button.hovered ? Theme.accentHover : Theme.accent;
            }
            if (button.pressed) {
                return Theme.buttonPressed;
            }
            return button.hovered ? Theme.buttonHover : button.quiet ? "transparent" : Theme.button;
        }
        radius: Theme.radius
        border.width: button.visualFocus ? 2 * Theme.line : Theme.line
        border.color: button.visualFocus ? (button.primary ? Theme.text : Theme.borderFocus)
                                         : (button.primary || button.quiet ? "transparent" : Theme.border)

        Behavior on color {
            ColorAnimation {
                duration: Theme.quick
            }
        }
    }

    Hint {
        text: button.hint
        shown: button.hovered
    }
}
