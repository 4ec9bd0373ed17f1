import QtQuick 2.15
import "../assembly"

// Brings the details pane back.
DefaultToolButton {
    objectName: "detailsButton"
    text: "Details"
    quiet: true
    hint: "Shows what there is to know about the row with the focus (F1)"
}
