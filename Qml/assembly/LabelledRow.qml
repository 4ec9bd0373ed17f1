import QtQuick 2.15
import QtQuick.Layouts 1.15
import "."

// A label and, in a column aligned with the other rows, its content.
Item {
    id: row

    property alias text: label.text
    default property alias content: slot.data

    implicitHeight: Theme.rowHeight

    BodyText {
        id: label

        width: parent.width * Theme.labelShare - Theme.gap
        height: parent.height
        elide: Text.ElideRight
    }

    RowLayout {
        id: slot

        x: parent.width * Theme.labelShare
        width: parent.width * (1 - Theme.labelShare)
        height: parent.height
        spacing: Theme.gapSmall
    }
}
