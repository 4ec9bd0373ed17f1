import QtQuick 2.15
import "../assembly"

// Shows the details pane again.
DefaultToolButton {
    objectName: "detailsButton"
    text: "Details"
    quiet: true
    hint: "Shows the details of the row with the focus (F1)"
}
