import QtQuick 2.15
import QtQuick.Layouts 1.15
import Varkel.Shell 1.0
import "../assembly"

// Applies the selected values; shows the progress of the current operation and the outcome of the last one.
Rectangle {
    id: footer

    property QtObject snapshots // varkel_manager.snapshots
    property bool connected: false
    readonly property int selected: snapshots.differences.selected

    implicitHeight: Theme.footerHeight
    color: Theme.window

    Rectangle {
        width: parent.width
        height: Theme.line
        color: Theme.hairline
    }

    RowLayout {
        anchors.fill: parent
        anchors.leftMargin: Theme.margin
        anchors.rightMargin: Theme.margin
        spacing: Theme.gapSmall

        BodyText {
            objectName: "snapshotOutcome"
            Layout.fillWidth: true
            visible: !progress.visible
            elide: Text.ElideMiddle
            color: text.length > 0 && footer.snapshots.outcome.length > 0 ? Theme.text : Theme.textFaint
            text: footer.snapshots.outcome.length > 0 ? PlainText.line(footer.snapshots.outcome)
                                                      : footer.selected === 0 ? "Nothing selected"
                                                                              : footer.selected + " selected"
        }

        ProgressLine {
            id: progress

            objectName: "snapshotProgress"
            Layout.fillWidth: true
            visible: false
            ratio: footer.snapshots.progress
        }

        DefaultToolButton {
            objectName: "stopSnapshotButton"
            text: "Stop"
            visible: progress.visible
            hint: "Stops after the current exchange with the sensor"
            onClicked: footer.snapshots.stop()
        }

        DefaultToolButton {
            objectName: "applyButton"
            text: "Apply selected"
            primary: true
            enabled: footer.connected && footer.selected > 0 && !footer.snapshots.busy
            hint: footer.connected ? "Shows what would be written and asks for confirmation" : "Connect first"
            onClicked: footer.snapshots.plan()
        }
    }

    // Short operations do not show the bar.
    Timer {
        interval: Theme.blink
        running: footer.snapshots.busy
        onRunningChanged: progress.visible = false
        onTriggered: progress.visible = true
    }
}
