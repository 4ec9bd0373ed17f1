import QtQuick 2.15
import QtQuick.Layouts 1.15
import Varkel.Shell 1.0
import "."

// The log window's tool bar: level filters, the byte flow switch, and actions on the lines.
Rectangle {
    id: bar

    property LogModel log
    property bool recording: false
    readonly property int buttonWidth: Theme.buttonWidth * 2 / 3 // so that all buttons fit beside the filters

    signal byteFlowToggled(bool on)
    signal saveRequested
    signal recordRequested
    signal recordingEnded

    implicitHeight: Theme.footerHeight
    color: Theme.bar

    RowLayout {
        anchors.fill: parent
        anchors.leftMargin: Theme.gap
        anchors.rightMargin: Theme.gap
        spacing: Theme.gapSmall

        Repeater {
            model: [
                { "level": LogModel.Info, "name": "Info", "tone": Theme.info },
                { "level": LogModel.Warning, "name": "Warning", "tone": Theme.warning },
                { "level": LogModel.Error, "name": "Error", "tone": Theme.error },
                { "level": LogModel.Bytes, "name": "Bytes", "tone": Theme.bytes }
            ]

            FilterButton {
                objectName: "logFilter" + modelData.name
                text: modelData.name
                tone: modelData.tone
                checked: true
                onToggled: bar.log.setLevelShown(modelData.level, checked)
            }
        }

        DefaultSwitch {
            Layout.leftMargin: Theme.gap
            objectName: "byteFlowSwitch"
            text: "Byte flow"
            onToggled: bar.byteFlowToggled(checked)
        }

        BodyText {
            Layout.fillWidth: true
            Layout.leftMargin: Theme.gap
            objectName: "logCount"
            color: Theme.textMuted
            elide: Text.ElideRight
            text: {
                if (!bar.log) {
                    return "";
                }
                if (bar.log.paused && bar.log.waiting > 0) {
                    return bar.log.waiting + " new";
                }
                return bar.log.count + (bar.log.count === 1 ? " line" : " lines");
            }
        }

        RecordButton {
            Layout.preferredWidth: Math.max(bar.buttonWidth, implicitTextWidth)
            objectName: "recordButton"
            recording: bar.recording
            onClicked: bar.recording ? bar.recordingEnded() : bar.recordRequested()
        }

        DefaultToolButton {
            Layout.preferredWidth: bar.buttonWidth
            objectName: "logPauseButton"
            text: bar.log && bar.log.paused ? "Resume" : "Pause"
            onClicked: bar.log.paused = !bar.log.paused
        }

        DefaultToolButton {
            Layout.preferredWidth: bar.buttonWidth
            objectName: "logCopyButton"
            text: "Copy"
            hint: "Copies all displayed lines"
            onClicked: bar.log.copy()
        }

        DefaultToolButton {
            Layout.preferredWidth: bar.buttonWidth + Theme.gapSmall
            objectName: "logSaveButton"
            text: "Save…"
            hint: "Writes all displayed lines to a file"
            onClicked: bar.saveRequested()
        }

        DefaultToolButton {
            Layout.preferredWidth: bar.buttonWidth
            objectName: "logClearButton"
            text: "Clear"
            onClicked: bar.log.clear()
        }
    }
}
