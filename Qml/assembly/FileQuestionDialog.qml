import QtQml 2.15
import Qt.labs.platform 1.1
import Varkel.Shell 1.0

FileDialog {
    property bool toWrite: false
    property string suggestedName
    property url startFolder
    readonly property url answer: file

    function suggest() {
        if (suggestedName.length > 0) {
            currentFile = folder + "/" + encodeURIComponent(suggestedName);
        }
    }

    fileMode: toWrite ? FileDialog.SaveFile : FileDialog.OpenFile

    Component.onCompleted: {
        folder = startFolder.toString() !== "" ? startFolder : LastFolder.folder;
        // Windows' dialog takes the name when it is made, Qt's own one only when it is open. To Windows' open dialog Qt
        // would give the name with its folder and slashes, which it refuses as a name.
        suggest();
        open();
        if (Qt.platform.os !== "windows") {
            suggest();
        }
    }
    onAccepted: {
        if (startFolder.toString() === "") {
            LastFolder.keep(file);
        }
    }
}
