import QtQuick 2.15
import QtQuick.Window 2.15

// Ctrl+1 to Ctrl+9 and Ctrl+0 choose a page, Ctrl+S saves it and F5 reads it, Ctrl+Return connects or disconnects, and
// Ctrl+Z and Ctrl+Shift+Z undo and redo an edit.
Item {
    id: shortcuts

    signal chosen(int index)
    signal saveRequested
    signal readRequested
    signal connectRequested

    // Commits what is being typed.
    function finishTyping() {
        var item = Window.activeFocusItem;
        if (item && item.finish) {
            item.finish();
        }
    }

    Shortcut {
        sequence: "Ctrl+Z"
        onActivated: varkel_manager.edits.undo()
    }

    Shortcut {
        sequences: ["Ctrl+Shift+Z", "Ctrl+Y"]
        onActivated: varkel_manager.edits.redo()
    }

    Repeater {
        model: 10

        Item {
            Shortcut {
                sequence: "Ctrl+" + (index + 1) % 10
                context: Qt.ApplicationShortcut
                onActivated: shortcuts.chosen(index)
            }
        }
    }

    Shortcut {
        sequence: "Ctrl+S"
        onActivated: {
            shortcuts.finishTyping();
            shortcuts.saveRequested();
        }
    }

    Shortcut {
        sequence: "F5"
        onActivated: shortcuts.readRequested()
    }

    Shortcut {
        sequences: ["Ctrl+Return", "Ctrl+Enter"]
        onActivated: {
            shortcuts.finishTyping();
            shortcuts.connectRequested();
        }
    }
}
