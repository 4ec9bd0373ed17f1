import QtQuick 2.15
import Varkel.Shell 1.0
import "../assembly"

// A search result: the variable with its location below it, and its value with its commands below.
Rectangle {
    id: row

    property QtObject values // the roles of the search's list model
    property bool current: false
    readonly property int page: values.page
    readonly property int row: values.row
    readonly property color tone: current ? Theme.accentText : Theme.text
    readonly property string label: PlainText.line(values.label)

    signal clicked

    implicitHeight: Theme.searchRowHeight
    radius: Theme.radius
    color: current ? Theme.accent : pointer.containsMouse ? Theme.raised : "transparent"

    Accessible.role: Accessible.ListItem
    Accessible.name: label + ", " + place.text
    Accessible.selected: current
    Accessible.onPressAction: clicked()

    BodyText {
        id: name

        x: Theme.gapSmall
        y: Theme.gapTiny
        width: parent.width * Theme.rowShare - x
        text: row.label
        color: row.tone
        elide: Text.ElideRight
        Accessible.ignored: true
    }

    BodyText {
        id: place

        anchors.left: name.left
        anchors.top: name.bottom
        width: name.width
        color: row.current ? Theme.accentText : Theme.textMuted
        font.pixelSize: Theme.fontSmall
        text: PlainText.line(row.values.place)
        elide: Text.ElideRight
        Accessible.ignored: true
    }

    BodyText {
        id: shownValue

        anchors.right: parent.right
        anchors.rightMargin: Theme.gap
        anchors.top: name.top
        width: parent.width - name.width - 2 * Theme.gap
        horizontalAlignment: Text.AlignRight
        text: PlainText.line(row.values.value)
        color: row.tone
        elide: Text.ElideRight
    }

    BodyText {
        anchors.right: shownValue.right
        anchors.top: place.top
        width: shownValue.width
        horizontalAlignment: Text.AlignRight
        color: place.color
        font.pixelSize: Theme.fontSmall
        text: PlainText.line(row.values.commands)
        elide: Text.ElideRight
    }

    MouseArea {
        id: pointer

        anchors.fill: parent
        hoverEnabled: true
        onClicked: row.clicked()
    }
}
