import QtQuick 2.15
import QtQuick.Window 2.15
import "."

// Scrolls `view` so that the control that gets the focus by key is visible.
Item {
    id: follower

    property Flickable view

    function isInside(item) {
        for (var ancestor = item; ancestor; ancestor = ancestor.parent) {
            if (ancestor === view.contentItem) {
                return true;
            }
        }
        return false;
    }

    function reveal(item) {
        var y = item.mapToItem(view.contentItem, 0, 0).y;
        if (y < view.contentY) {
            view.contentY = Math.max(view.originY - view.topMargin, y - Theme.gap);
        } else if (y + item.height > view.contentY + view.height) {
            view.contentY = Math.min(view.originY + view.contentHeight + view.bottomMargin, y + item.height + Theme.gap)
                            - view.height;
        }
    }

    Connections {
        target: follower.Window.window
        enabled: follower.enabled

        function onActiveFocusItemChanged() {
            var item = follower.Window.activeFocusItem;
            if (item && follower.isInside(item)) {
                follower.reveal(item);
            }
        }
    }
}
