import QtQuick 2.15
import QtQuick.Layouts 1.15
import QtQuick.Templates 2.15 as T
import "."
import "../small_sensor"

// The page of the small serial sensors, which have no table-driven pages: its sections and, beside them, their list.
Item {
    id: page

    property string selectedModel
    property alias commands: commandWidget

    signal logRequested
    signal refused(string message)
    signal upgradeRequested(url file, string mode, var start)

    function showSection(index) {
        list.show(index);
    }

    objectName: "zeltoPage"
    Accessible.role: Accessible.Pane
    Accessible.name: selectedModel

    SectionList {
        id: list

        width: Theme.sideBarWidth
        height: parent.height
        view: sectionsView
        sections: column.children
    }

    Flickable {
        id: sectionsView

        objectName: "zeltoView"
        anchors.fill: parent
        anchors.leftMargin: list.width
        contentHeight: column.height + 2 * Theme.margin
        boundsBehavior: Flickable.StopAtBounds
        clip: true
        T.ScrollBar.vertical: DefaultScrollBar {}

        Column {
            id: column

            x: Theme.margin
            y: Theme.margin - Theme.gapSmall
            width: sectionsView.width * Theme.rowShare
            spacing: Theme.gap

            Section {
                width: column.width
                title: "Lidar Info"

                InfoTable {
                    width: column.width
                    fieldName: "zeltoInfo"
                    entries: varkel_manager.ZeltoLidarInfo
                }
            }

            FunctionSection {
                width: column.width
                selectedModel: page.selectedModel
            }

            UpgradeSection {
                width: column.width
                selectedModel: page.selectedModel
                onRefused: page.refused(message)
                onUpgradeRequested: page.upgradeRequested(file, mode, start)
            }

            Section {
                width: column.width
                title: "Log"

                LabelledRow {
                    width: column.width
                    text: "VK Log Window"

                    Item {
                        Layout.fillWidth: true
                    }

                    DefaultToolButton {
                        objectName: "zeltoLogButton"
                        text: "Open"
                        onClicked: page.logRequested()
                    }
                }
            }

            Section {
                width: column.width
                title: "Send Command"

                GetCmdWidget {
                    id: commandWidget

                    width: column.width
                }
            }
        }
    }

    FocusFollower {
        view: sectionsView
    }
}
