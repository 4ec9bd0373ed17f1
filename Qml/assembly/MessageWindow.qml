import QtQuick 2.15
import "."

// A question or a remark. With another button than "OK" it can also be left without consent.
NoticeWindow {
    objectName: "messageWindow"
    title: "Please note"
    titleColor: Theme.warning
    cancellable: acceptText !== "OK"
}
