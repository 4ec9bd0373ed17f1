import QtQuick 2.15
import "../assembly"

// A variable that is one of several options.
RowFrame {
    id: row

    readonly property string shownText: choice.chosenLabel

    OptionChoice {
        id: choice

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        row: row
    }
}
