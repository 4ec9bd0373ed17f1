import QtQuick 2.15
import QtQuick.Dialogs 1.3
import QtQuick.Layouts 1.15
import QtQuick.Window 2.15
import Varkel.Shell 1.0
import "."

// The session's log in a window of its own. It gathers lines from the start, also while it is hidden.
Window {
    id: logWindow

    property alias log: logModel

    signal byteFlowToggled(bool on)
    signal failed(string message)

    function printInfo(message) {
        logModel.append(LogModel.Info, message);
    }

    function printWarning(message) {
        logModel.append(LogModel.Warning, message);
    }

    function printError(message) {
        logModel.append(LogModel.Error, message);
    }

    function printBytes(message) {
        logModel.append(LogModel.Bytes, message);
    }

    function present() {
        show();
        raise();
        requestActivate();
    }

    objectName: "logWindow"
    title: "VK Log Window"
    width: Theme.logWindowWidth
    height: Theme.logWindowHeight
    minimumWidth: Theme.logWindowWidth / 2
    minimumHeight: Theme.logWindowHeight / 2
    color: Theme.window

    LogModel {
        id: logModel
    }

    Shortcut {
        sequence: "Esc"
        onActivated: logWindow.close()
    }

    Shortcut {
        sequences: [StandardKey.Close]
        onActivated: logWindow.close()
    }

    ColumnLayout {
        anchors.fill: parent
        spacing: 0

        LogBar {
            Layout.fillWidth: true
            log: logModel
            onByteFlowToggled: logWindow.byteFlowToggled(on)
            onSaveRequested: saveDialog.active = true
        }

        LogList {
            Layout.fillWidth: true
            Layout.fillHeight: true
            log: logModel
        }
    }

    Loader {
        id: saveDialog

        active: false
        sourceComponent: FileDialog {
            title: "Save the log"
            selectExisting: false
            defaultSuffix: "txt"
            nameFilters: ["Text files (*.txt)", "All files (*)"]
            onAccepted: {
                var error = logModel.save(fileUrl);
                if (error.length > 0) {
                    logWindow.failed(error);
                }
                saveDialog.active = false;
            }
            onRejected: saveDialog.active = false
            Component.onCompleted: open()
        }
    }
}
