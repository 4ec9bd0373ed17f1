import QtQml 2.15
import Qt.labs.platform 1.1
import "."

FileDialog {
    property bool toWrite: false
    property string suggestedName
    readonly property url answer: file

    fileMode: toWrite ? FileDialog.SaveFile : FileDialog.OpenFile

    folder: LastFolder.folder

    Component.onCompleted: {
        if (suggestedName.length > 0) {
            currentFile = LastFolder.folder + "/" + encodeURIComponent(suggestedName);
        }
        open();
    }
    onAccepted: LastFolder.keep(file)
}
