import QtQuick 2.15
import QtQuick.Layouts 1.15
import QtQuick.Templates 2.15 as T
import Varkel.Shell 1.0
import "../assembly"

// The unsaved changes on all pages; each can be reverted on its own.
T.Popup {
    id: panel

    property var titles: []
    readonly property var edits: varkel_manager.edits.all

    signal pageRequested(int page)

    objectName: "editsPanel"
    width: Theme.panelWidth
    implicitHeight: Math.min(Theme.panelHeight, list.contentHeight + heading.height + topPadding + bottomPadding
                             + Theme.gapSmall)
    padding: Theme.gap
    margins: Theme.gapSmall
    focus: true
    closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutsideParent

    onEditsChanged: {
        if (edits.length === 0) {
            close();
        }
    }

    background: Rectangle {
        color: Theme.window
        border.color: Theme.borderHover
        radius: Theme.radiusLarge
    }

    contentItem: Item {
        SectionTitle {
            id: heading

            width: parent.width
            text: "Unsaved changes"
        }

        ListView {
            id: list

            anchors.fill: parent
            anchors.topMargin: heading.height
            boundsBehavior: Flickable.StopAtBounds
            clip: true
            model: panel.edits
            T.ScrollBar.vertical: DefaultScrollBar {}

            delegate: RowLayout {
                objectName: "editRow_" + index
                width: list.width - Theme.gap
                height: Theme.rowHeight
                spacing: Theme.gapSmall

                BodyText {
                    Layout.fillWidth: true
                    Layout.preferredWidth: 2
                    elide: Text.ElideRight
                    text: PlainText.line(modelData.label)
                }

                BodyText {
                    objectName: "editTexts_" + index
                    Layout.fillWidth: true
                    Layout.preferredWidth: 2
                    elide: Text.ElideMiddle
                    text: PlainText.line(modelData.from) + " → " + PlainText.line(modelData.to)
                }

                DefaultToolButton {
                    text: "Show"
                    quiet: true
                    hint: PlainText.line(panel.titles[modelData.page] || "")
                    Accessible.name: "Show " + modelData.label
                    onClicked: {
                        panel.close();
                        panel.pageRequested(modelData.page);
                    }
                }

                DefaultToolButton {
                    objectName: "takeBack_" + index
                    text: "Revert"
                    Accessible.name: "Revert " + modelData.label
                    onClicked: varkel_manager.edits.takeBack(modelData.key)
                }
            }
        }
    }
}
