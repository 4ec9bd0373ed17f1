import QtQuick 2.15
import QtQuick.Layouts 1.15
import QtQuick.Templates 2.15 as T
import Varkel.Shell 1.0
import "../assembly"

// The log window's button and the downloads of the sensor's own logs.
Flickable {
    id: page

    property bool hasOperationLog: false
    property string wantedLog
    readonly property string operationLog: "Operation Log"

    signal logRequested

    // A download asks for its destination: an archive for the operation log, a folder for the others.
    function ask(name) {
        wantedLog = name;
        var archive = name === operationLog;
        question.ask({
            "title": archive ? "Save the operation log" : "Choose the folder for the log",
            "selectFolder": !archive,
            "selectExisting": !archive,
            "defaultSuffix": "tar",
            "suggestedName": question.datedName("operation_log_"
                                                + varkel_manager.getLidarSN().replace(/[^A-Za-z0-9._-]+/g, "_"), "tar"),
            "nameFilters": archive ? ["Archives (*.tar)", "All files (*)"] : []
        });
    }

    function download(target) {
        if (wantedLog === operationLog) {
            varkel_manager.DownloadOperationLog(target);
        } else {
            varkel_manager.DownloadLog(target, wantedLog);
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
                text: PlainText.line(modelData)
                downloading: varkel_manager.IsDownloadLog && page.wantedLog === modelData
                onRequested: page.ask(modelData)
            }
        }
    }

    FileQuestion {
        id: question

        onChosen: page.download(file)
    }

    Connections {
        target: varkel_manager

        function onLidarModelChanged() {
            page.lookUp();
        }
    }
}
