import QtQuick 2.15
import "../assembly"

// The list of a page's sections. It marks the visible one, and scrolls the page to the one that is clicked.
TabWidget {
    id: list

    property Flickable view
    property var sections: [] // the items, each with its `title`
    property bool jumping: false // the last sections can't scroll to the top, but are marked when clicked

    function show(index) {
        if (index < 0 || index >= sections.length) {
            return;
        }
        jumping = true;
        view.contentY = Math.max(0, Math.min(sections[index].y, view.contentHeight - view.height));
        currentIndex = index;
        jumping = false;
    }

    function follow() {
        for (var last = sections.length - 1; last > 0 && sections[last].y > view.contentY + Theme.margin;) {
            --last;
        }
        currentIndex = last;
    }

    entryName: "section_"
    titles: Array.prototype.map.call(sections, section => section.title)
    Accessible.name: "Sections"
    onChosen: show(index)

    Connections {
        target: list.view

        function onContentYChanged() {
            if (!list.jumping) {
                list.follow();
            }
        }
    }
}
