pragma Singleton

import QtQuick 2.15

// Every colour, size and duration of the user interface.
QtObject {
    // Surfaces, from the back to the front.
    readonly property color base: "#010101"
    readonly property color bar: "#222325"
    readonly property color window: "#2B2C2E"
    readonly property color raised: "#313335"
    readonly property color button: "#3A3D3F"
    readonly property color buttonHover: "#4D4D4D"
    readonly property color buttonPressed: "#666666"
    readonly property color field: "#222325"
    readonly property color shade: "#B0010101"

    // Lines.
    readonly property color hairline: "#3A3D3F"
    readonly property color border: "#808080"
    readonly property color borderHover: "#A3A3A3"
    readonly property color borderFocus: "#4A90E2"

    // Texts.
    readonly property color text: "#EEEEEE"
    readonly property color textMuted: "#ABADB0"
    readonly property color textFaint: "#9C9EA1"
    readonly property color selection: "#2C67FF"

    // Meaning.
    readonly property color accent: "#2C67FF"
    readonly property color accentHover: "#1F57E6"
    readonly property color accentPressed: "#4A90E2"
    readonly property color accentText: "#FFFFFF"
    readonly property color accentPressedText: "#010101"
    readonly property color mark: "#4A90E2" // of selected or edited items
    readonly property color connected: "#00FF6B"
    readonly property color disconnected: "red"
    readonly property color progress: "#3256FF"
    readonly property color progressDone: "green"
    readonly property color info: "#EEEEEE"
    readonly property color success: "#3CCB7F"
    readonly property color warning: "#F2B84B"
    readonly property color error: "#FF6B61"
    readonly property color bytes: "#7FB2F0"
    readonly property var sectors: ["#4A90E2", "#3CCB7F", "#F2B84B", "#B58CF0", "#FF6B61"]

    // Spacing.
    readonly property int gapTiny: 4
    readonly property int gapSmall: 8
    readonly property int gap: 12
    readonly property int gapLarge: 20
    readonly property int margin: 24

    // Sizes.
    readonly property int radius: 4
    readonly property int radiusLarge: 8
    readonly property int line: 1
    readonly property int markWidth: 3
    readonly property int liveMarkWidth: 30
    readonly property int dot: 7
    readonly property int light: 14
    readonly property int lightWidth: 62
    readonly property int controlHeight: 29
    readonly property int rowHeight: 35
    readonly property int tallRowHeight: 80
    readonly property real rowShare: 0.6
    readonly property real labelShare: 0.42
    readonly property int topBarHeight: 70
    readonly property int sideBarWidth: 208
    readonly property int tabHeight: 40
    readonly property int stripHeight: 32
    readonly property int statusHeight: 32
    readonly property int statusButtonHeight: 24
    readonly property int panelWidth: 640
    readonly property int listedEdits: 12
    readonly property int panelHeight: 420
    readonly property real noteShare: 0.6 // maximum share of a control's width
    readonly property int tick: 12
    readonly property int tickStroke: 2
    readonly property int menuItemHeight: 42
    readonly property int menuWidth: 260
    readonly property int footerHeight: 60
    readonly property int buttonWidth: 96
    readonly property int checkSize: 18
    readonly property int timeColumn: 180
    readonly property int snapshotTableHeight: 212
    readonly property int noticeWidth: 460
    readonly property int noticeTextHeight: 320
    readonly property int popupHeight: 320
    readonly property int wholePage: 1000000 // higher than any page
    readonly property int topBarInset: 12
    readonly property int dropHeight: 132
    readonly property int progressHeight: 8
    readonly property int busyHeight: 2
    readonly property int scrollBarWidth: 8
    readonly property int hintWidth: 420
    readonly property int detailsLeastWidth: 260
    readonly property int detailCaptionWidth: 84
    readonly property int plotHeight: 150
    readonly property int searchWidth: 720
    readonly property int searchRows: 9
    readonly property int searchRowHeight: 44
    readonly property int logWindowWidth: 1040
    readonly property int logWindowHeight: 600

    // Fonts.
    readonly property string family: Qt.application.font.family
    readonly property int fontSmall: 12
    readonly property int font: 13
    readonly property int fontHeading: 15
    readonly property int fontTitle: 22
    readonly property string monospace: "monospace"

    // Looks of states.
    readonly property real disabledOpacity: 0.55
    readonly property real quietOpacity: 0.6

    // Durations in milliseconds.
    readonly property int quick: 90
    readonly property int blink: 150
    readonly property int hintDelay: 600
    readonly property int sweep: 1200
    readonly property int progressInterval: 500
    readonly property int connectionCheckInterval: 5000
}
