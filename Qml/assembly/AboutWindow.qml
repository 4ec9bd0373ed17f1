import QtQuick 2.15
import "."

NoticeWindow {
    objectName: "aboutWindow"
    title: "Varkel"
    titleColor: Theme.accentPressed

    function show() {
        notify("Version " + Qt.application.version
               + "\n\nReads, sets and upgrades lidar sensors over Ethernet and serial lines."
               + "\n\n" + Qt.application.organization, "Close");
    }
}
