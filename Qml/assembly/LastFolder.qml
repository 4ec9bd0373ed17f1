pragma Singleton

import QtQuick 2.15
import Qt.labs.platform 1.1

// Where the next question for a file starts: the folder of the last answer, at first the user's documents.
QtObject {
    property url folder: StandardPaths.writableLocation(StandardPaths.DocumentsLocation)

    function keep(file) {
        folder = file.toString().replace(/\/[^\/]*$/, "");
    }
}
