import QtQuick 2.15

// Creates its page when first shown, and keeps it.
Loader {
    property bool current: false

    anchors.fill: parent
    visible: current
    active: false
    onCurrentChanged: active = active || current
    Component.onCompleted: active = current
}
