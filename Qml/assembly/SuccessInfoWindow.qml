import QtQuick 2.15
import "."

NoticeWindow {
    objectName: "successWindow"
    title: "Done"
    titleColor: Theme.success
}
