import QtQuick 2.15
import QtQuick.Layouts 1.15
import "../assembly"

// A setting of the sensor as text, "not read" until it has been.
DefaultTextField {
    // Takes an edit in progress away as well.
    function forget() {
        show("");
        text = "";
    }

    Layout.fillWidth: true
    placeholderText: "not read"
}
