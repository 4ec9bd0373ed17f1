import QtQuick 2.15
import "."

NoticeWindow {
    // packaging/licences/third-party.txt has the full texts.
    readonly property var madeWith: [
        ["Qt 5.15", "LGPL 3, linked dynamically: you may replace it"],
        ["OpenSSL 3", "Apache 2.0"],
        ["libcsv", "LGPL 2.1"],
        ["spdlog, fmt", "MIT"],
        ["CLI11", "BSD, in the command line programs"],
        ["Roboto", "Apache 2.0"],
        ["GCC's and MinGW-w64's run-time libraries", "GPL 3 with the exception for such libraries"]
    ]

    objectName: "aboutWindow"
    title: "Varkel"
    titleColor: Theme.accentPressed

    function show() {
        notify("Version " + Qt.application.version
               + "\n\nReads, sets and upgrades lidar sensors over Ethernet and serial lines."
               + "\n\n" + Qt.application.organization
               + "\n\nMade with\n" + madeWith.map(part => part[0] + ": " + part[1]).join("\n")
               + "\n\nThe texts of the licences are in the folder \"licences\" beside the program, with how to replace"
               + " Qt.", "Close");
    }
}
