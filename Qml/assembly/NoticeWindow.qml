import QtQuick 2.15
import QtQuick.Layouts 1.15
import QtQuick.Templates 2.15 as T
import Varkel.Shell 1.0
import "."

// A modal notice in the window. Notices that arrive while one is open are queued, so none is lost. The heading is
// `title`, unless the notice has one of its own.
T.Popup {
    id: notice

    property string title
    property color titleColor: Theme.text
    property string heading: title
    property string message
    property string acceptText: "OK"
    property bool cancellable: false // then Enter presses Cancel
    property var waiting: []
    property bool decided: false
    property alias extra: extraSlot.data // below the text
    readonly property real restHeight: titleRow.implicitHeight + extraSlot.implicitHeight + buttonRow.implicitHeight
                                       + 3 * layout.spacing + Theme.gapSmall + topPadding + bottomPadding
    readonly property real textHeight: Math.min(body.implicitHeight, Theme.noticeTextHeight,
                                                parent ? Math.max(Theme.rowHeight, parent.height - restHeight - Theme.margin)
                                                       : Theme.noticeTextHeight)

    signal accepted(var next)

    property var next: null // called when the user accepts

    function notify(text, buttonText, whatFollows, ownTitle) {
        var entry = {
            "text": text,
            "button": buttonText || "OK",
            "next": whatFollows || null,
            "heading": ownTitle || title
        };
        if (opened || visible) {
            waiting = waiting.concat([entry]);
        } else {
            present(entry);
        }
    }

    // Adds to the notice with this `text` if it is still open, and returns whether it is.
    function amend(text, more, otherTitle) {
        if (!visible || message !== text) {
            return false;
        }
        message = text + "\n\n" + more;
        heading = otherTitle || heading;
        return true;
    }

    function present(entry) {
        message = entry.text;
        acceptText = entry.button;
        next = entry.next;
        heading = entry.heading;
        decided = false;
        open();
    }

    function accept() {
        decided = true;
        close();
    }

    parent: T.Overlay.overlay
    anchors.centerIn: parent
    width: Math.min(Theme.noticeWidth, parent ? parent.width - 2 * Theme.margin : Theme.noticeWidth)
    // Added up, because a layout's own height lags when a text grows while it is shown.
    height: textHeight + restHeight - (extraSlot.visible ? 0 : layout.spacing)
    padding: Theme.margin
    modal: true
    focus: true
    closePolicy: T.Popup.CloseOnEscape

    onOpened: (cancellable ? cancelButton : acceptButton).forceActiveFocus(Qt.TabFocusReason)
    onClosed: {
        // A button that kept the focus would get it back without its outline when the next notice opens.
        acceptButton.focus = cancelButton.focus = false;
        var wasAccepted = decided;
        var acceptedNext = next;
        if (waiting.length > 0) {
            var entry = waiting[0];
            waiting = waiting.slice(1);
            present(entry);
        }
        if (wasAccepted) {
            accepted(acceptedNext);
        }
    }

    T.Overlay.modal: Rectangle {
        color: Theme.shade
    }

    enter: Transition {
        NumberAnimation {
            property: "opacity"
            from: 0
            to: 1
            duration: Theme.quick
        }
    }

    background: Rectangle {
        color: Theme.window
        border.color: Theme.border
        radius: Theme.radiusLarge

        Rectangle {
            width: parent.width - 2 * parent.radius
            x: parent.radius
            height: Theme.markWidth
            color: notice.titleColor
        }
    }

    contentItem: ColumnLayout {
        id: layout

        spacing: Theme.gap
        Keys.onUpPressed: flick.scroll(-Theme.rowHeight)
        Keys.onDownPressed: flick.scroll(Theme.rowHeight)

        RowLayout {
            id: titleRow

            Layout.fillWidth: true

            BodyText {
                Layout.fillWidth: true
                text: notice.heading
                color: notice.titleColor
                font.pixelSize: Theme.fontHeading
                font.bold: true
                Accessible.role: Accessible.Heading
            }

            BodyText {
                visible: notice.waiting.length > 0
                color: Theme.textMuted
                text: notice.waiting.length + " more"
            }
        }

        Flickable {
            id: flick

            function scroll(by) {
                contentY = Math.max(0, Math.min(contentHeight - height, contentY + by));
            }

            Layout.fillWidth: true
            Layout.minimumHeight: notice.textHeight
            Layout.maximumHeight: notice.textHeight
            contentHeight: body.implicitHeight
            boundsBehavior: Flickable.StopAtBounds
            clip: true
            T.ScrollBar.vertical: DefaultScrollBar {}

            BodyText {
                id: body

                objectName: "noticeText"
                width: parent.width - Theme.gap
                text: PlainText.paragraph(notice.message)
                wrapMode: Text.Wrap
                lineHeight: 1.25
            }
        }

        Item {
            id: extraSlot

            Layout.fillWidth: true
            implicitHeight: childrenRect.height
            visible: children.length > 0
        }

        RowLayout {
            id: buttonRow

            Layout.fillWidth: true
            Layout.topMargin: Theme.gapSmall
            spacing: Theme.gapSmall

            Item {
                Layout.fillWidth: true
            }

            DefaultToolButton {
                id: cancelButton

                objectName: "noticeCancelButton"
                visible: notice.cancellable
                text: "Cancel"
                onClicked: notice.close()
            }

            DefaultToolButton {
                id: acceptButton

                objectName: "noticeAcceptButton"
                primary: true
                text: notice.acceptText
                onClicked: notice.accept()
            }
        }
    }
}
