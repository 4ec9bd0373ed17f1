import QtQuick 2.15
import "."

// Reports a success, or what was not done for a harmless reason.
NoticeWindow {
    readonly property bool done: heading === title

    function note(text) {
        notify(text, "", null, "Note");
    }

    objectName: "successWindow"
    title: "Done"
    titleColor: done ? Theme.success : Theme.warning
}
