import QtQuick 2.15
import "."

// A bold title over a hairline.
Item {
    id: section

    property alias text: title.text

    implicitHeight: Theme.rowHeight
    implicitWidth: title.implicitWidth

    BodyText {
        id: title

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: rule.top
        anchors.bottomMargin: Theme.gapTiny + Theme.line
        font.pixelSize: Theme.fontHeading
        font.bold: true
        elide: Text.ElideRight
        Accessible.role: Accessible.Heading
    }

    Rectangle {
        id: rule

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        height: Theme.line
        color: Theme.border
    }
}
