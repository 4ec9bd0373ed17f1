import QtQuick 2.15

// Ctrl+1 to Ctrl+9 choose a page; Ctrl+Z and Ctrl+Shift+Z undo and redo an edit.
Item {
    id: shortcuts

    signal chosen(int index)

    Shortcut {
        sequence: "Ctrl+Z"
        onActivated: varkel_manager.edits.undo()
    }

    Shortcut {
        sequences: ["Ctrl+Shift+Z", StandardKey.Redo]
        onActivated: varkel_manager.edits.redo()
    }

    Repeater {
        model: 9

        Item {
            Shortcut {
                sequence: "Ctrl+" + (index + 1)
                context: Qt.ApplicationShortcut
                onActivated: shortcuts.chosen(index)
            }
        }
    }
}
