import QtQuick 2.15
import QtQuick.Layouts 1.15
import QtQuick.Templates 2.15 as T
import "."

// The page of the small serial sensors, which have no table-driven pages.
Flickable {
    id: page

    property string selectedModel
    property alias commands: commandWidget

    signal logRequested

    objectName: "zeltoPage"
    contentHeight: column.height + 2 * Theme.margin
    boundsBehavior: Flickable.StopAtBounds
    clip: true
    T.ScrollBar.vertical: DefaultScrollBar {}

    Column {
        id: column

        x: Theme.margin
        y: Theme.margin
        width: page.width * Theme.rowShare
        spacing: Theme.gapTiny

        BodyText {
            text: page.selectedModel
            font.pixelSize: Theme.fontTitle
            font.bold: true
        }

        BodyText {
            width: parent.width
            color: Theme.textMuted
            wrapMode: Text.Wrap
            text: "The functions of this sensor are not available yet."
        }

        SectionTitle {
            width: parent.width
            text: "Log"
        }

        LabelledRow {
            width: parent.width
            text: "VK Log Window"

            DefaultToolButton {
                objectName: "zeltoLogButton"
                text: "Open"
                onClicked: page.logRequested()
            }

            Item {
                Layout.fillWidth: true
            }
        }

        SectionTitle {
            width: parent.width
            text: "Send Command"
        }

        GetCmdWidget {
            id: commandWidget

            width: parent.width
        }
    }
}
