import QtQuick 2.15
import QtQuick.Layouts 1.15
import QtQuick.Window 2.15
import Varkel.Shell 1.0
import "."

// The session's log in a window of its own.
Window {
    id: logWindow

    property LogModel log
    property bool recording: false
    property var decode: null

    signal byteFlowToggled(bool on)
    signal failed(string message)
    signal recordRequested(url file)
    signal recordingEnded

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

    // In front of its owner, on the same screen: a window manager would choose the primary screen.
    Component.onCompleted: {
        x = transientParent.x + (transientParent.width - width) / 2;
        y = transientParent.y + (transientParent.height - height) / 2;
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
            log: logWindow.log
            recording: logWindow.recording
            onRecordRequested: recordQuestion.ask({
                "title": "Record all exchanges",
                "selectExisting": false,
                "defaultSuffix": "pcap",
                "suggestedName": recordQuestion.datedName("varkel", "pcap"),
                "nameFilters": ["Captures (*.pcap)", "All files (*)"]
            })
            onRecordingEnded: logWindow.recordingEnded()
            onByteFlowToggled: logWindow.byteFlowToggled(on)
            onSaveRequested: question.ask({
                "title": "Save the log",
                "selectExisting": false,
                "defaultSuffix": "txt",
                "suggestedName": question.datedName("varkel_log", "txt"),
                "nameFilters": ["Text files (*.txt)", "All files (*)"]
            })
        }

        LogList {
            Layout.fillWidth: true
            Layout.fillHeight: true
            log: logWindow.log
            decode: logWindow.decode
        }
    }

    FileQuestion {
        id: recordQuestion

        owner: logWindow
        onChosen: logWindow.recordRequested(file)
    }

    FileQuestion {
        id: question

        owner: logWindow
        onChosen: {
            var error = logWindow.log.save(file);
            if (error.length > 0) {
                logWindow.failed(error);
            }
        }
    }
}
