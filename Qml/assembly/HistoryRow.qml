import QtQuick 2.15
import QtQuick.Templates 2.15 as T
import Varkel.Shell 1.0
import "."

T.AbstractButton {
    id: row

    property bool heading: false
    property string time
    property string code
    property string payload
    property int timeWidth
    property int codeWidth
    readonly property color tone: heading ? Theme.textMuted : Theme.text

    implicitHeight: Theme.rowHeight
    leftPadding: Theme.gapSmall
    rightPadding: Theme.gapSmall
    enabled: !heading
    hoverEnabled: true
    focusPolicy: heading ? Qt.NoFocus : Qt.StrongFocus

    Accessible.role: Accessible.Row
    Accessible.name: time + " " + code + " " + payload

    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()

    contentItem: Row {
        BodyText {
            width: row.timeWidth
            height: parent.height
            text: row.time
            color: row.tone
        }

        BodyText {
            width: row.codeWidth
            height: parent.height
            text: PlainText.line(row.code)
            color: row.tone
            elide: Text.ElideRight
        }

        BodyText {
            width: row.availableWidth - row.timeWidth - row.codeWidth
            height: parent.height
            text: PlainText.line(row.payload)
            color: row.tone
            elide: Text.ElideRight
        }
    }

    background: Rectangle {
        color: row.pressed ? Theme.buttonHover : row.hovered ? Theme.button
                           : row.heading ? Theme.bar : "transparent"
        border.width: row.visualFocus ? Theme.line : 0
        border.color: Theme.borderFocus

        Rectangle {
            anchors.bottom: parent.bottom
            width: parent.width
            height: Theme.line
            color: Theme.hairline
        }
    }

    Hint {
        text: row.heading ? "" : "Copies the command to the fields above"
        shown: row.hovered
    }
}
