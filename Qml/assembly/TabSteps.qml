import QtQuick 2.15
import QtQuick.Window 2.15

// Holds a list view and moves Tab and Shift+Tab through its rows from top to bottom, including those that have not been
// created yet; its delegates have their `number` in the list. The row with the focus is the view's current item, which
// the view keeps, so an edit in progress survives being scrolled away.
Item {
    id: steps

    property ListView list
    property bool inside: false // the focus is in a row
    default property alias content: middle.data

    function rowOf(item) {
        while (item && item.parent !== list.contentItem) {
            item = item.parent;
        }
        return item;
    }

    function follow() {
        var row = rowOf(Window.activeFocusItem);
        inside = row !== null && row !== undefined;
        if (inside) {
            list.currentIndex = row.number;
        }
    }

    // The controls of a row that accept the focus, in order.
    function stopsOf(item) {
        var stops = [];
        for (var i = 0; item && item.visible && item.enabled && i < item.children.length; ++i) {
            var child = item.children[i];
            var takesTab = child.activeFocusOnTab && child.visible && child.enabled;
            stops = stops.concat(takesTab ? [child] : stopsOf(child));
        }
        return stops;
    }

    function step(forward) {
        list.positionViewAtIndex(list.currentIndex, ListView.Contain);
        var stops = stopsOf(list.currentItem);
        var next = stops.indexOf(Window.activeFocusItem) + (forward ? 1 : -1);
        if (next >= 0 && next < stops.length) {
            focusOn(stops[next], forward);
        } else {
            enter(list.currentIndex + (forward ? 1 : -1), forward);
        }
    }

    // Moves to the next control in this row or a later one, or to the item after the list.
    function enter(number, forward) {
        for (; number >= 0 && number < list.count; number += forward ? 1 : -1) {
            list.positionViewAtIndex(number, ListView.Contain);
            var stops = stopsOf(list.itemAtIndex(number));
            if (stops.length > 0) {
                focusOn(stops[forward ? 0 : stops.length - 1], forward);
                return;
            }
        }
        focusOn((forward ? bottom : top).nextItemInFocusChain(forward), forward);
    }

    function focusOn(item, forward) {
        item.forceActiveFocus(forward ? Qt.TabFocusReason : Qt.BacktabFocusReason);
    }

    // Where the focus enters the list. The window's own focus chain has the rows in the order of their creation.
    Item {
        id: top

        activeFocusOnTab: true
        onActiveFocusChanged: {
            if (activeFocus) {
                steps.enter(0, true);
            }
        }
    }

    Item {
        id: middle

        anchors.fill: parent
    }

    Item {
        id: bottom

        activeFocusOnTab: true
        onActiveFocusChanged: {
            if (activeFocus) {
                steps.enter(steps.list.count - 1, false);
            }
        }
    }

    Shortcut {
        sequence: "Tab"
        enabled: steps.inside
        onActivated: steps.step(true)
    }

    Shortcut {
        sequence: "Shift+Tab"
        enabled: steps.inside
        onActivated: steps.step(false)
    }

    Connections {
        target: steps.Window.window

        function onActiveFocusItemChanged() {
            steps.follow();
        }
    }
}
