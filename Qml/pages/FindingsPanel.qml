import QtQuick 2.15
import QtQuick.Templates 2.15 as T
import Varkel.Shell 1.0
import "../assembly"

// The faults in the model's table, one per line.
T.Popup {
    id: panel

    property string summary
    property var lines: []

    objectName: "findingsPanel"
    width: Theme.panelWidth
    implicitHeight: Math.min(Theme.panelHeight, list.contentHeight + heading.height + topPadding + bottomPadding
                             + Theme.gapSmall)
    padding: Theme.gap
    margins: Theme.gapSmall
    focus: true
    closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutsideParent

    onLinesChanged: close()

    background: Rectangle {
        color: Theme.window
        border.color: Theme.borderHover
        radius: Theme.radiusLarge
    }

    contentItem: Item {
        SectionTitle {
            id: heading

            width: parent.width
            text: PlainText.line(panel.summary)
        }

        ListView {
            id: list

            anchors.fill: parent
            anchors.topMargin: heading.height
            boundsBehavior: Flickable.StopAtBounds
            clip: true
            model: panel.lines
            spacing: Theme.gapSmall
            T.ScrollBar.vertical: DefaultScrollBar {}

            delegate: BodyText {
                objectName: "finding_" + index
                width: list.width - Theme.gap
                wrapMode: Text.Wrap
                text: PlainText.line(modelData)
            }
        }
    }
}
