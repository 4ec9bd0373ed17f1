import QtQuick 2.15
import QtQuick.Layouts 1.15
import "../assembly"

// Cancel and Save, and the number of unsaved changes.
Rectangle {
    id: footer

    property int module: 0
    property int edits: 0
    property bool saving: false // disables Save until the save ends

    signal cancelled
    signal saved

    implicitHeight: Theme.footerHeight
    color: Theme.window

    Rectangle {
        width: parent.width
        height: Theme.line
        color: Theme.hairline
    }

    RowLayout {
        x: Theme.margin
        width: parent.width * Theme.rowShare
        height: parent.height
        spacing: Theme.gapSmall

        BodyText {
            Layout.fillWidth: true
            objectName: "editCount_" + footer.module
            color: footer.edits > 0 ? Theme.text : Theme.textFaint
            elide: Text.ElideRight
            text: footer.edits === 0 ? "No changes"
                                     : footer.edits === 1 ? "1 change not saved yet"
                                                          : footer.edits + " changes not saved yet"
        }

        DefaultToolButton {
            objectName: "cancelButton_" + footer.module
            text: "Cancel"
            hint: "Discards the changes and reads the page again"
            onClicked: footer.cancelled()
        }

        DefaultToolButton {
            objectName: "saveButton_" + footer.module
            text: "Save"
            primary: footer.edits > 0
            enabled: !footer.saving
            hint: "Writes the changes to the sensor"
            onClicked: footer.saved()
        }
    }
}
