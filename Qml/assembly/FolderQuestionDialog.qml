import QtQml 2.15
import Qt.labs.platform 1.1
import Varkel.Shell 1.0

FolderDialog {
    readonly property url answer: folder

    Component.onCompleted: {
        folder = LastFolder.folder;
        open();
    }
    onAccepted: LastFolder.folder = folder
}
