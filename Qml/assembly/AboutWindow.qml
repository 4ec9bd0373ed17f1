import QtQuick 2.15
import Varkel.Shell 1.0
import "."

NoticeWindow {
    // packaging/licences/third-party.txt has the full texts.
    readonly property var madeWith: [
        ["Qt 5.15", "LGPL 3, linked dynamically: you may replace it"],
        ["OpenSSL 3", "Apache 2.0"],
        ["libcsv", "LGPL 2.1"],
        ["spdlog, fmt", "MIT"],
        ["CLI11", "BSD, used by the command-line programs"],
        ["Roboto", "Apache 2.0"],
        ["GCC's runtime libraries", "GPL 3 with the GCC Runtime Library Exception"],
        ["MinGW-w64", "its own permissive licences"]
    ]

    readonly property var keys: [
        ["Ctrl+1 to Ctrl+0", "the first ten pages, or a section"],
        ["Page Up, Page Down", "scroll the page by a screen"],
        ["Ctrl+F", "search through all pages"],
        ["Ctrl+S, F5", "save or read the page"],
        ["Ctrl+Z, Ctrl+Shift+Z", "undo or redo a change"],
        ["Ctrl+Return", "connect or disconnect"],
        ["F1", "show or hide the details of the row"],
        ["Down", "recent addresses, in the address field"]
    ]

    function show() {
        links.folders = About.folders();
        notify("Version " + Qt.application.version + ", " + About.build
               + "\n\nReads, sets and upgrades lidar sensors over Ethernet and serial lines."
               + "\n\n" + Qt.application.organization
               + "\n\nKeys\n" + keys.map(key => key[0] + ": " + key[1]).join("\n")
               + "\n\nMade with\n" + madeWith.map(part => part[0] + ": " + part[1]).join("\n")
               + "\n\nThe licence texts, and how to replace Qt, are in the folder \"licences\" next to the program.",
               "Close");
    }

    objectName: "aboutWindow"
    title: "Varkel"
    titleColor: Theme.accentPressed
    extra: FolderLinks {
        id: links

        anchors.left: parent.left
        anchors.right: parent.right
    }
}
