import QtQuick 2.15
import QtQuick.Layouts 1.15
import "../assembly"

// A setting of the sensor as text; "not read" until it has been read.
DefaultTextField {
    // Also discards an edit in progress.
    function forget() {
        show("");
        text = "";
    }

    Layout.fillWidth: true
    placeholderText: "not read"
}
