import QtQuick 2.15
import "."

// A question or a remark. A question names the act on its button and can be left without consent.
NoticeWindow {
    objectName: "messageWindow"
    title: "Please note"
    titleColor: Theme.warning
    cancellable: acceptText !== "OK"
}
