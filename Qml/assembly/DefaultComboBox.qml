import QtQuick 2.15
import QtQuick.Templates 2.15 as T
import Varkel.Shell 1.0
import "."

// A combo box with a list of texts. `unlisted` is shown while no entry is selected.
T.ComboBox {
    id: combo

    property string unlisted
    property bool marked: false
    property bool faulty: false
    property bool dimmed: false
    property string hint
    property bool hintBeside: false
    property bool openedByReturn: false // the key's release would close it again

    implicitWidth: 160
    implicitHeight: Theme.controlHeight
    leftPadding: Theme.gapSmall
    rightPadding: arrow.width + 2 * Theme.gapSmall
    font.family: Theme.family
    font.pixelSize: Theme.font
    hoverEnabled: true
    focusPolicy: Qt.StrongFocus
    wheelEnabled: false
    displayText: currentIndex < 0 && !editable ? unlisted : currentText

    Accessible.role: Accessible.ComboBox
    Accessible.description: hint

    function openByReturn() {
        openedByReturn = true;
        popup.open();
    }

    Keys.onReturnPressed: popup.visible ? event.accepted = false : openByReturn()
    Keys.onEnterPressed: popup.visible ? event.accepted = false : openByReturn()
    Keys.onReleased: {
        if (openedByReturn && (event.key === Qt.Key_Return || event.key === Qt.Key_Enter)) {
            openedByReturn = false;
            event.accepted = true;
        }
    }

    contentItem: T.TextField {
        text: combo.editable ? combo.editText : PlainText.line(combo.displayText)
        enabled: combo.editable && combo.enabled
        readOnly: !combo.editable
        color: combo.enabled && !combo.dimmed ? Theme.text : Theme.textMuted
        selectionColor: Theme.selection
        selectedTextColor: Theme.accentText
        font: combo.font
        validator: combo.validator
        verticalAlignment: TextInput.AlignVCenter
        selectByMouse: combo.editable
        clip: true
        Accessible.ignored: true
    }

    indicator: DownArrow {
        id: arrow

        x: combo.width - width - Theme.gapSmall
        y: (combo.height - height) / 2
        visible: combo.enabled
    }

    background: Rectangle {
        color: !combo.enabled ? "transparent"
                              : combo.down && !combo.editable ? Theme.buttonHover
                                                              : combo.editable ? Theme.field : Theme.button
        radius: Theme.radius
        border.width: combo.activeFocus ? 2 * Theme.line : Theme.line
        border.color: combo.faulty ? Theme.error
                                   : combo.activeFocus ? Theme.borderFocus
                                                       : combo.hovered ? Theme.borderHover : Theme.border

        EditedLine {
            visible: combo.marked
        }
    }

    delegate: T.ItemDelegate {
        id: choice

        width: ListView.view ? ListView.view.width : 0
        height: Theme.rowHeight - Theme.gapTiny
        leftPadding: Theme.gapSmall
        rightPadding: Theme.gapSmall
        highlighted: combo.highlightedIndex === index
        hoverEnabled: true
        text: PlainText.line(modelData)

        Accessible.role: Accessible.ListItem
        Accessible.name: text

        contentItem: BodyText {
            text: choice.text
            color: choice.highlighted ? Theme.accentText : Theme.text
            elide: Text.ElideRight
            font.bold: combo.currentIndex === index
            Accessible.ignored: true
        }

        background: Rectangle {
            color: choice.highlighted ? Theme.accent : "transparent"
            radius: Theme.radius
        }
    }

    popup: T.Popup {
        y: combo.height + Theme.gapTiny / 2
        width: combo.width
        implicitHeight: Math.min(Theme.popupHeight, list.contentHeight + topPadding + bottomPadding)
        padding: Theme.gapTiny
        margins: Theme.gapSmall

        contentItem: ListView {
            id: list

            clip: true
            model: combo.delegateModel
            currentIndex: combo.highlightedIndex
            highlightMoveDuration: 0
            boundsBehavior: Flickable.StopAtBounds
            T.ScrollBar.vertical: DefaultScrollBar {}
        }

        background: Rectangle {
            color: Theme.button
            border.color: Theme.borderHover
            radius: Theme.radius
        }
    }

    Hint {
        text: combo.hint
        beside: combo.hintBeside
        shown: combo.hovered && !combo.popup.visible
    }
}
