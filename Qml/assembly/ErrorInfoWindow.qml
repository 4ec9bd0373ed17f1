import QtQuick 2.15
import "."

NoticeWindow {
    objectName: "errorWindow"
    title: "Error"
    titleColor: Theme.error
}
