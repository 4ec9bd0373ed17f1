import QtQuick 2.15
import QtQuick.Templates 2.15 as T
import Varkel.Shell 1.0
import "."

// The log's lines. The view follows the newest line until the user scrolls up.
ListView {
    id: list

    property LogModel log
    property bool following: true
    // Explains a request and its reply; set by a component that knows the model's table.
    property var decode: null

    // Expands or collapses a line of the byte flow.
    function open(row, wanted) {
        var exchange = log.exchange(row);
        var meaning = wanted && decode ? decode(exchange[0], exchange[1]) : "";
        following = following && !wanted;
        log.explain(row, wanted && meaning.length === 0 ? "The meaning of these bytes is not known." : meaning);
    }

    objectName: "logList"
    model: log
    clip: true
    topMargin: Theme.gapSmall
    bottomMargin: Theme.gapSmall
    boundsBehavior: Flickable.StopAtBounds
    reuseItems: true
    cacheBuffer: Theme.popupHeight
    activeFocusOnTab: true
    keyNavigationEnabled: false

    Accessible.role: Accessible.List
    Accessible.name: "Log lines"

    Keys.onPressed: {
        if (event.matches(StandardKey.Copy)) {
            log.copy();
            event.accepted = true;
        }
    }

    onMovementStarted: following = false
    onMovementEnded: following = atYEnd
    onCountChanged: {
        if (following) {
            Qt.callLater(positionViewAtEnd);
        }
    }
    onHeightChanged: {
        if (following) {
            Qt.callLater(positionViewAtEnd);
        }
    }

    T.ScrollBar.vertical: DefaultScrollBar {
        onPressedChanged: list.following = !pressed && list.atYEnd
    }

    delegate: LogLine {
        width: list.width
        onToggled: list.open(row, open)
    }
}
