import QtQuick 2.15
import Varkel.Shell 1.0
import "."

// One line of the log: time, level, message. A part of the message can be selected and copied.
Item {
    id: line

    readonly property color tone: {
        switch (model.level) {
        case LogModel.Warning:
            return Theme.warning;
        case LogModel.Error:
            return Theme.error;
        case LogModel.Bytes:
            return Theme.bytes;
        }
        return Theme.info;
    }

    implicitHeight: Math.max(message.implicitHeight, Theme.fontHeading) + Theme.gapTiny

    Accessible.role: Accessible.ListItem
    Accessible.name: model.time + " " + model.levelName + " " + model.message

    BodyText {
        id: time

        x: Theme.gap
        text: model.time
        color: Theme.textFaint
        font.family: Theme.monospace
        font.pixelSize: Theme.fontSmall
        Accessible.ignored: true
    }

    BodyText {
        id: level

        anchors.left: time.right
        anchors.leftMargin: Theme.gap
        width: 5 * Theme.gap
        text: model.levelName
        color: line.tone
        font.family: Theme.monospace
        font.pixelSize: Theme.fontSmall
        Accessible.ignored: true
    }

    TextEdit {
        id: message

        anchors.left: level.right
        anchors.right: parent.right
        anchors.leftMargin: Theme.gapSmall
        anchors.rightMargin: Theme.gapLarge
        text: model.message
        textFormat: TextEdit.PlainText
        wrapMode: TextEdit.Wrap
        color: line.tone
        selectionColor: Theme.selection
        selectedTextColor: Theme.accentText
        font.family: Theme.monospace
        font.pixelSize: Theme.fontSmall
        readOnly: true
        selectByMouse: true
        onActiveFocusChanged: {
            if (!activeFocus) {
                deselect();
            }
        }
    }
}
