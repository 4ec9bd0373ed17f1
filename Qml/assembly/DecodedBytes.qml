import QtQuick 2.15
import QtQuick.Templates 2.15 as T
import Varkel.Shell 1.0
import "."

// Bytes and their meaning in columns, to read, select and copy. Long lines scroll sideways.
Rectangle {
    id: box

    property string text
    property string name
    readonly property int lines: 16
    readonly property int shown: 65536 // characters, some 700 lines

    implicitHeight: Math.min(edit.implicitHeight, lines * (Theme.fontSmall + Theme.gapTiny)) + 2 * Theme.gapTiny
    color: Theme.field
    border.color: edit.activeFocus ? Theme.borderFocus : Theme.border
    radius: Theme.radius

    Flickable {
        anchors.fill: parent
        anchors.margins: Theme.gapTiny
        contentWidth: edit.implicitWidth
        contentHeight: edit.implicitHeight
        boundsBehavior: Flickable.StopAtBounds
        clip: true
        T.ScrollBar.vertical: DefaultScrollBar {}

        TextEdit {
            id: edit

            leftPadding: Theme.gapTiny
            rightPadding: Theme.gap
            text: PlainText.paragraph(box.text, box.shown)
            textFormat: TextEdit.PlainText
            color: Theme.text
            selectionColor: Theme.selection
            selectedTextColor: Theme.text
            font.family: Theme.monospace
            font.pixelSize: Theme.fontSmall
            readOnly: true
            selectByMouse: true
            activeFocusOnTab: true

            Accessible.role: Accessible.EditableText
            Accessible.readOnly: true
            Accessible.name: box.name
        }
    }
}
