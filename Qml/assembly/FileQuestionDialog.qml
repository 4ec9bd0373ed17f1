import QtQml 2.15
import Qt.labs.platform 1.1

FileDialog {
    property bool toWrite: false
    property url startFolder
    property url proposal
    readonly property url answer: file

    fileMode: toWrite ? FileDialog.SaveFile : FileDialog.OpenFile

    Component.onCompleted: {
        if (startFolder.toString() !== "") {
            folder = startFolder;
        }
        if (proposal.toString() !== "") {
            currentFile = proposal;
        }
        open();
    }
}
