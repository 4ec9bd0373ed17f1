import QtQuick 2.15
import "."

// The scroll bar of a view that loads it when it has more to show than fits.
DefaultScrollBar {
    property Flickable view

    size: view.visibleArea.heightRatio
    position: view.visibleArea.yPosition
    onPositionChanged: {
        if (pressed) {
            view.contentY = position * view.contentHeight;
        }
    }
}
