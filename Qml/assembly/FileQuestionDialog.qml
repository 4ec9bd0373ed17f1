import QtQml 2.15
import Qt.labs.platform 1.1

FileDialog {
    property bool toWrite: false
    readonly property url answer: file

    fileMode: toWrite ? FileDialog.SaveFile : FileDialog.OpenFile

    Component.onCompleted: open()
}
