import QtQuick 2.15

// Ctrl+1 to Ctrl+9 choose a page.
Item {
    id: shortcuts

    signal chosen(int index)

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
