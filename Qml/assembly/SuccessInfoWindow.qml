import QtQuick 2.15
import "."

// What has gone well, or what was left undone for want of something harmless.
NoticeWindow {
    readonly property bool done: heading === title

    function note(text) {
        notify(text, "", null, "Note");
    }

    objectName: "successWindow"
    title: "Done"
    titleColor: done ? Theme.success : Theme.warning
}
