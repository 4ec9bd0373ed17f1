import QtQml 2.15
import Qt.labs.platform 1.1

FolderDialog {
    readonly property url answer: folder

    Component.onCompleted: open()
}
