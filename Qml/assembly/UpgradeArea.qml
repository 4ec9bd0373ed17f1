import QtQuick 2.15
import QtQuick.Layouts 1.15
import Varkel.Shell 1.0
import "."

// Accepts a firmware package, chosen or dropped, and shows the progress of its transfer. The receiver of the package
// calls `take(file)` when the transfer has started. Rows put inside it are shown above the drop field.
Item {
    id: area

    property var endings: [".patch"]
    property bool upgrading: false
    property alias ratio: progress.ratio
    property string fileName
    property string blocked // why no package is accepted at the moment
    property string remark // shown instead of the file name until a file is accepted
    property string after // the sensor's state after an upgrade, shown instead of the note
    property bool quietWhenIdle: false // shows bar and note only while upgrading
    default property alias content: extra.data

    signal fileChosen(url file)
    signal fileRefused(url file)
    signal fileBlocked

    function ask() {
        question.ask({
            "title": "Choose an upgrade package",
            "nameFilters": ["Upgrade packages (" + endings.map(function (ending) {
                return "*" + ending;
            }).join(" ") + ")", "All files (*)"]
        });
    }

    function offer(file) {
        var path = file.toString();
        for (var i = 0; i < endings.length; ++i) {
            if (path.endsWith(endings[i])) {
                blocked.length > 0 ? fileBlocked() : fileChosen(file);
                return;
            }
        }
        fileRefused(file);
    }

    function take(file) {
        var path = file.toString();
        remark = "";
        fileName = decodeURIComponent(path.substring(path.lastIndexOf("/") + 1));
    }

    implicitHeight: column.implicitHeight

    Column {
        id: column

        width: parent.width
        spacing: Theme.gapSmall

        RowLayout {
            width: parent.width
            height: Theme.rowHeight
            spacing: Theme.gap

            DefaultToolButton {
                objectName: "attachButton"
                text: "Attach File"
                enabled: !area.upgrading && area.blocked.length === 0
                onClicked: area.ask()
            }

            BodyText {
                Layout.fillWidth: true
                objectName: "upgradeFileName"
                color: area.remark.length > 0 ? Theme.warning : Theme.textMuted
                elide: Text.ElideMiddle
                text: PlainText.line(area.remark.length > 0 ? area.remark : area.blocked.length > 0 ? area.blocked
                                                                                              : area.fileName)
            }
        }

        Column {
            id: extra

            width: parent.width
            visible: children.length > 0
        }

        DropField {
            objectName: "upgradeDrop"
            width: parent.width
            height: Theme.dropHeight
            text: "Click to Upload or Drop Files Here"
            enabled: !area.upgrading
            onClicked: area.blocked.length > 0 ? area.fileBlocked() : area.ask()
            onDropped: area.offer(file)
        }

        ProgressLine {
            id: progress

            objectName: "upgradeProgress"
            width: parent.width
            visible: area.upgrading || !area.quietWhenIdle
        }

        BodyText {
            objectName: "upgradeNote"
            width: parent.width
            visible: area.upgrading || !area.quietWhenIdle
            text: !area.upgrading && area.after.length > 0
                  ? PlainText.paragraph(area.after)
                  : "Keep the power on while upgrading. The lidar will reboot after upgrade."
            color: area.upgrading ? Theme.warning : Theme.textMuted
            wrapMode: Text.Wrap
        }
    }

    FileQuestion {
        id: question

        onChosen: area.offer(file)
    }
}
