import QtQuick 2.15

// Asks for a file or a folder with the desktop's dialog, which is loaded for each question.
Loader {
    id: question

    signal chosen(url file)

    // The properties are those of the dialog.
    function ask(properties) {
        setSource("FileQuestionDialog.qml", properties);
    }

    visible: false

    Connections {
        target: question.item

        function onAccepted() {
            var file = question.item.fileUrl;
            question.source = "";
            question.chosen(file);
        }

        function onRejected() {
            question.source = "";
        }
    }
}
