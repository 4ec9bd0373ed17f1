import QtQuick 2.15

// Asks for a file or a folder with the desktop's own dialog, which is loaded for each question.
Loader {
    id: question

    property var owner: owner_window // of the dialog, which stays above it: a window of the desktop, so not the view

    signal chosen(url file)

    // The name of a new file of today, with ASCII digits whatever the locale.
    function datedName(stem, suffix) {
        return stem + "_" + new Date().toLocaleDateString(Qt.locale("C"), "yyyy-MM-dd") + "." + suffix;
    }

    // `properties` has a "title". "selectFolder" asks for a folder instead of a file; "selectExisting" set to false
    // asks for a file to write. Files can also have "nameFilters", a "defaultSuffix", a "suggestedName" and the
    // initial "folder", which is otherwise the last one used.
    function ask(properties) {
        if (properties.selectFolder) {
            setSource("FolderQuestionDialog.qml", { "title": properties.title, "parentWindow": owner });
        } else {
            setSource("FileQuestionDialog.qml", {
                "startFolder": properties.folder || "",
                "title": properties.title,
                "parentWindow": owner,
                "toWrite": properties.selectExisting === false,
                "suggestedName": properties.suggestedName || "",
                "nameFilters": properties.nameFilters || [],
                "defaultSuffix": properties.defaultSuffix || ""
            });
        }
    }

    visible: false

    Connections {
        target: question.item

        function onAccepted() {
            var answer = question.item.answer;
            question.source = "";
            question.chosen(answer);
        }

        function onRejected() {
            question.source = "";
        }
    }
}
