import QtQuick 2.15
import QtQuick.Layouts 1.15
import "../assembly"

// A variable that is one of several options.
RowFrame {
    id: row

    readonly property string shownText: choice.chosenLabel

    OptionChoice {
        id: choice

        Layout.fillWidth: true
        row: row
    }
}
