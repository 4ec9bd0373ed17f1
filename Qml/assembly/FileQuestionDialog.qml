import QtQuick 2.15
import QtQuick.Dialogs 1.3

FileDialog {
    Component.onCompleted: open()
}
