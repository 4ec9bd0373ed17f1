import QtQuick 2.15
import Varkel.Shell 1.0
import "."

// One line of the log: time, level, message. Parts of the message can be selected and copied. A line of the byte flow
// can be expanded to show what its bytes mean.
Item {
    id: line

    readonly property bool opens: model.level === LogModel.Bytes
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

    signal toggled(int row, bool open)

    implicitHeight: Math.max(message.implicitHeight, Theme.fontHeading) + Theme.gapTiny
                    + (meaning.visible ? meaning.height + 2 * Theme.gapTiny : 0)

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

    Opener {
        id: opener

        objectName: "logOpener"
        anchors.left: level.right
        visible: line.opens
        open: model.meaning.length > 0
        hint: open ? "Hide what the bytes mean" : "Show what the bytes mean"
        onClicked: line.toggled(index, !open)
    }

    TextEdit {
        id: message

        anchors.left: opener.right
        anchors.right: parent.right
        anchors.leftMargin: Theme.gapTiny
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

    DecodedBytes {
        id: meaning

        objectName: "logMeaning"
        anchors.left: message.left
        anchors.right: message.right
        anchors.top: message.bottom
        anchors.topMargin: Theme.gapTiny
        visible: model.meaning.length > 0
        name: "What the bytes mean"
        text: model.meaning
    }
}
