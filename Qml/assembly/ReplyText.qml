import QtQuick 2.15
import QtQuick.Templates 2.15 as T
import Varkel.Shell 1.0
import "."

// Hexadecimal text from the sensor, to read, select and copy.
Rectangle {
    id: box

    property string text
    property string name
    readonly property int lines: 8
    readonly property int shown: 32768 // characters: all of a reply of 10 KiB, which is far more than usual

    implicitHeight: Math.min(edit.implicitHeight, lines * (Theme.font + Theme.gapTiny)) + 2 * Theme.gapTiny
    color: Theme.field
    border.color: edit.activeFocus ? Theme.borderFocus : Theme.border
    radius: Theme.radius

    Flickable {
        anchors.fill: parent
        anchors.margins: Theme.gapTiny
        contentHeight: edit.implicitHeight
        boundsBehavior: Flickable.StopAtBounds
        clip: true
        T.ScrollBar.vertical: DefaultScrollBar {}

        TextEdit {
            id: edit

            width: parent.width - Theme.gap
            leftPadding: Theme.gapTiny
            topPadding: Theme.gapTiny / 2
            bottomPadding: Theme.gapTiny / 2
            text: box.text.length > 0 ? PlainText.line(box.text, box.shown) : " "
            textFormat: TextEdit.PlainText
            wrapMode: TextEdit.Wrap
            color: Theme.text
            selectionColor: Theme.selection
            selectedTextColor: Theme.accentText
            font.family: Theme.monospace
            font.pixelSize: Theme.font
            readOnly: true
            selectByMouse: true
            activeFocusOnTab: true

            Accessible.role: Accessible.EditableText
            Accessible.readOnly: true
            Accessible.name: box.name
        }
    }
}
