import QtQuick 2.15
import QtQuick.Layouts 1.15
import "../assembly"

// The caption of a control in a row that has several.
BodyText {
    Layout.preferredWidth: Theme.buttonWidth
    color: Theme.textMuted
    elide: Text.ElideRight
    Accessible.ignored: true
}
