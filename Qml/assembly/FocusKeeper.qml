import QtQuick 2.15
import QtQuick.Window 2.15

// Gives the focus back to the control inside `view` that had it before a notice, a menu or a dialog took it, or before
// it was disabled; emits `lost` if that control is gone or hidden.
Item {
    id: keeper

    property Item view
    property Item last: null
    property int reason: Qt.OtherFocusReason // why it got the focus; decides whether the focus is drawn
    readonly property bool ready: last !== null && last.enabled && last.visible

    signal lost

    function isInside(item) {
        while (item && item !== view) {
            item = item.parent;
        }
        return item === view;
    }

    function isControl(item) {
        return item && item.visible && item.activeFocusOnTab && isInside(item);
    }

    // A notice or a menu above the view.
    function isAbove(item) {
        return item && item !== Window.contentItem && !isInside(item);
    }

    function follow() {
        var item = Window.activeFocusItem;
        if (isControl(item)) {
            last = item;
            reason = item.focusReason === undefined || item.selectAll ? Qt.OtherFocusReason : item.focusReason;
        } else {
            Qt.callLater(giveBack);
        }
    }

    function giveBack() {
        var item = Window.activeFocusItem;
        if (!Window.active || isControl(item) || isAbove(item)) {
            return;
        }
        if (!last || !last.visible) {
            lost();
        } else if (last.enabled) { // otherwise it gets the focus when it is enabled again
            last.forceActiveFocus(reason);
        }
    }

    onReadyChanged: Qt.callLater(giveBack)

    Connections {
        target: keeper.Window.window

        function onActiveFocusItemChanged() {
            keeper.follow();
        }
    }
}
