import QtQuick 2.15
import QtQuick.Dialogs 1.3
import QtQuick.Layouts 1.15
import QtQuick.Templates 2.15 as T
import "../assembly"

// The log window's button and the downloads of the sensor's own logs.
Flickable {
    id: page

    property bool hasOperationLog: false
    property string wantedLog
    readonly property string operationLog: "Operation Log"

    signal logRequested

    // The downloads ask for the folder first.
    function ask(name) {
        wantedLog = name;
        dialog.active = true;
    }

    function download(folder) {
        if (wantedLog === operationLog) {
            varkel_manager.DownloadOperationLog(folder);
        } else {
            varkel_manager.DownloadLog(folder, wantedLog);
        }
    }

    function lookUp() {
        hasOperationLog = varkel_manager.CheckVarExistsInConfigFileByName(operationLog);
    }

    objectName: "logPage"
    contentHeight: column.height + 2 * Theme.margin
    boundsBehavior: Flickable.StopAtBounds
    clip: true
    T.ScrollBar.vertical: DefaultScrollBar {}

    Accessible.role: Accessible.Pane
    Accessible.name: "Log"

    Component.onCompleted: lookUp()

    Column {
        id: column

        x: Theme.margin
        y: Theme.margin
        width: page.width * Theme.rowShare

        LabelledRow {
            width: parent.width
            text: "VK Log Window"

            DefaultToolButton {
                objectName: "openLogButton"
                text: "Open"
                onClicked: page.logRequested()
            }

            Item {
                Layout.fillWidth: true
            }
        }

        DownloadRow {
            objectName: "operationLogRow"
            width: parent.width
            text: page.operationLog
            visible: page.hasOperationLog
            downloading: varkel_manager.IsDownloadLog && page.wantedLog === text
            onRequested: page.ask(text)
        }

        Repeater {
            model: varkel_manager.logRepeaterModel

            DownloadRow {
                objectName: "logRow_" + index
                width: column.width
                text: modelData
                downloading: varkel_manager.IsDownloadLog && page.wantedLog === text
                onRequested: page.ask(text)
            }
        }
    }

    Loader {
        id: dialog

        active: false
        sourceComponent: FileDialog {
            title: "Choose the folder for the log"
            selectFolder: true
            onAccepted: {
                dialog.active = false;
                page.download(fileUrl);
            }
            onRejected: dialog.active = false
            Component.onCompleted: open()
        }
    }

    Connections {
        target: varkel_manager

        function onLidarModelChanged() {
            page.lookUp();
        }
    }
}
