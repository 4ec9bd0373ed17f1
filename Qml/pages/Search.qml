import QtQuick 2.15

// Ctrl+F: the search through all pages, created when first used.
Item {
    id: search

    property var box: null

    signal chosen(int page, int row)

    function open() {
        if (!box) {
            box = Qt.createComponent("SearchBox.qml").createObject(search);
            box.chosen.connect(chosen);
        }
        box.open();
    }

    objectName: "search"

    Shortcut {
        sequence: StandardKey.Find
        enabled: varkel_manager.connectType === 0
        onActivated: search.open()
    }
}
