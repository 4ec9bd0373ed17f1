import QtQuick 2.15
import QtQuick.Layouts 1.15
import Varkel.Shell 1.0
import "."

// The tool's folders, each with a button that opens it.
Column {
    id: links

    property var folders: []

    Repeater {
        model: links.folders

        RowLayout {
            width: links.width
            height: Theme.rowHeight
            spacing: Theme.gapSmall

            BodyText {
                Layout.preferredWidth: Theme.detailCaptionWidth
                color: Theme.textMuted
                text: modelData.label
            }

            BodyText {
                Layout.fillWidth: true
                text: PlainText.line(modelData.path)
                elide: Text.ElideMiddle
            }

            DefaultToolButton {
                objectName: "openFolder_" + index
                implicitHeight: Theme.statusButtonHeight
                text: modelData.exists ? "Open" : "Missing"
                enabled: modelData.exists
                Accessible.name: "Open the folder " + modelData.path
                onClicked: Qt.openUrlExternally(modelData.url)
            }
        }
    }
}
