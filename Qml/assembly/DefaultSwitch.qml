import QtQuick 2.15
import QtQuick.Templates 2.15 as T
import "."

T.Switch {
    id: control

    property bool dimmed: false
    readonly property int knob: Theme.light
    readonly property color onColor: dimmed ? Theme.buttonPressed : Theme.accent

    implicitWidth: track.width + (text.length > 0 ? label.implicitWidth + Theme.gapSmall : 0)
    implicitHeight: Theme.controlHeight
    hoverEnabled: true
    opacity: enabled ? 1 : Theme.disabledOpacity

    Accessible.role: Accessible.CheckBox
    Accessible.name: text
    Accessible.checked: checked

    Keys.onReturnPressed: toggleByKey()
    Keys.onEnterPressed: toggleByKey()

    function toggleByKey() {
        toggle();
        toggled();
    }

    indicator: Rectangle {
        id: track

        anchors.verticalCenter: parent.verticalCenter
        width: 2 * control.knob + Theme.gapSmall
        height: control.knob + Theme.gapTiny
        radius: height / 2
        color: control.checked ? control.onColor : Theme.button
        border.width: control.visualFocus ? 2 * Theme.line : Theme.line
        border.color: control.visualFocus ? Theme.text
                                          : control.hovered ? Theme.borderHover
                                                            : control.checked && !control.dimmed ? Theme.accent : Theme.border

        Behavior on color {
            ColorAnimation {
                duration: Theme.quick
            }
        }

        Rectangle {
            x: control.checked ? parent.width - width - Theme.gapTiny / 2 : Theme.gapTiny / 2
            anchors.verticalCenter: parent.verticalCenter
            width: control.knob
            height: control.knob
            radius: height / 2
            color: control.down || control.dimmed ? Theme.textMuted : Theme.text

            Behavior on x {
                NumberAnimation {
                    duration: Theme.quick
                }
            }
        }
    }

    contentItem: BodyText {
        id: label

        leftPadding: track.width + Theme.gapSmall
        text: control.text
        Accessible.ignored: true
    }
}
