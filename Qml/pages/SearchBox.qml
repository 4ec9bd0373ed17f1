import QtQuick 2.15
import QtQuick.Templates 2.15 as T
import Varkel.Shell 1.0
import "../assembly"

// Finds variables on all pages as the user types. Up and Down select, Enter goes there, Escape closes.
T.Popup {
    id: box

    property QtObject search: varkel_manager.search

    signal chosen(int page, int row)

    function accept() {
        var found = list.currentItem;
        if (found) {
            close();
            chosen(found.page, found.row);
        }
    }

    objectName: "searchBox"
    parent: T.Overlay.overlay
    x: parent ? Math.round((parent.width - width) / 2) : 0
    y: Theme.topBarHeight
    width: Math.min(Theme.searchWidth, parent ? parent.width - 2 * Theme.margin : Theme.searchWidth)
    implicitHeight: field.height + list.height + outcome.height + 2 * padding
    padding: Theme.gap
    modal: true
    focus: true
    closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutside

    onAboutToShow: {
        field.text = search.query;
        field.selectAll();
        search.query = field.text; // the values may have changed
    }
    onOpened: field.forceActiveFocus(Qt.TabFocusReason)

    T.Overlay.modal: Rectangle {
        color: Theme.shade
    }

    background: Rectangle {
        color: Theme.window
        border.color: Theme.borderHover
        radius: Theme.radiusLarge
    }

    contentItem: Item {
        DefaultTextField {
            id: field

            objectName: "searchField"
            width: parent.width
            Accessible.name: "Find a variable"
            placeholderText: "Find by name, value, unit, option or command"
            onTextChanged: {
                if (box.visible) {
                    value = text; // so that typing here does not count as an edit
                    box.search.query = text;
                }
            }
            Keys.onUpPressed: list.decrementCurrentIndex()
            Keys.onDownPressed: list.incrementCurrentIndex()
            Keys.onReturnPressed: box.accept()
            Keys.onEnterPressed: box.accept()
            Keys.onEscapePressed: box.close()
        }

        ListView {
            id: list

            objectName: "searchList"
            anchors.top: field.bottom
            width: parent.width
            height: Math.min(count, Theme.searchRows) * Theme.searchRowHeight
            topMargin: 0
            clip: true
            model: box.search
            currentIndex: count > 0 ? 0 : -1
            highlightMoveDuration: 0
            boundsBehavior: Flickable.StopAtBounds
            T.ScrollBar.vertical: DefaultScrollBar {}

            Accessible.role: Accessible.List
            Accessible.name: "Found variables"

            delegate: SearchRow {
                width: list.width
                current: ListView.isCurrentItem
                values: model
                onClicked: {
                    list.currentIndex = index;
                    box.accept();
                }
            }

            Connections {
                target: box.search

                function onQueryChanged() {
                    list.currentIndex = list.count > 0 ? 0 : -1;
                }
            }
        }

        BodyText {
            id: outcome

            objectName: "searchOutcome"
            anchors.top: list.bottom
            height: Theme.rowHeight
            color: Theme.textMuted
            text: {
                if (field.length === 0) {
                    return "Searches all pages of the model.";
                }
                if (list.count === 0) {
                    return "No variable has this in its name, value, unit, options or commands.";
                }
                return list.count === 1 ? "1 row"
                                        : list.count < 100 ? list.count + " rows" : "The first 100 rows";
            }
        }
    }
}
