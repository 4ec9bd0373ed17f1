import QtQuick 2.15
import "."

// A question or a note. The button of a question names the action, and Cancel leaves it undone.
NoticeWindow {
    objectName: "messageWindow"
    title: "Please note"
    titleColor: Theme.warning
    cancellable: acceptText !== "OK"
}
