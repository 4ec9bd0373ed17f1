import QtQuick 2.15
import Varkel.Shell 1.0
import "../assembly"

// The readings of a live variable and of the pinned ones since they were first shown.
Column {
    id: plot

    property string varId
    property bool live: false
    property var pinned: []
    property var summaries: []
    readonly property var shown: live && pinned.indexOf(varId) < 0 ? pinned.concat([varId]) : pinned
    readonly property bool filled: summaries.length > 0

    function refresh() {
        var history = varkel_manager.history;
        summaries = shown.map(id => history.summary(id)).filter(summary => summary.name !== undefined);
    }

    function togglePin() {
        pinned = pinned.indexOf(varId) < 0 ? pinned.concat([varId]) : pinned.filter(id => id !== varId);
    }

    function save(file) {
        return varkel_manager.history.saveCsv(file, shown);
    }

    spacing: Theme.gapSmall
    visible: live || pinned.length > 0
    onShownChanged: refresh()
    Component.onCompleted: refresh()

    HistoryPlot {
        id: curves

        objectName: "plot"
        visible: plot.filled
        width: parent.width
        height: Theme.plotHeight
        history: varkel_manager.history
        series: plot.shown
        colours: Theme.sectors
        textColour: Theme.textMuted
        lineColour: Theme.hairline
        fontSize: Theme.fontSmall
        pointer: pointerArea.containsMouse ? pointerArea.mouseX : -1

        Accessible.role: Accessible.Graphic
        Accessible.name: "Readings since they were first shown"

        MouseArea {
            id: pointerArea

            anchors.fill: parent
            hoverEnabled: true
            acceptedButtons: Qt.NoButton
        }
    }

    BodyText {
        objectName: "plotReading"
        width: parent.width
        color: plot.filled && curves.reading.length > 0 ? Theme.text : Theme.textMuted
        font.pixelSize: Theme.fontSmall
        wrapMode: Text.Wrap
        text: !plot.filled ? "Nothing to plot: no numeric readings yet."
                           : curves.reading.length > 0 ? PlainText.line(curves.reading)
                                                       : "Point at the curve to read its values."
    }

    Repeater {
        model: plot.summaries.length

        PlotLegend {
            width: plot.width
            summary: plot.summaries[index] || ({})
            colour: Theme.sectors[index % Theme.sectors.length]
        }
    }

    Row {
        spacing: Theme.gapSmall

        DefaultToolButton {
            objectName: "pinButton"
            enabled: plot.live
            text: plot.pinned.indexOf(plot.varId) < 0 ? "Pin" : "Unpin"
            hint: "Keeps this row in the plot while other rows are shown"
            onClicked: plot.togglePin()
        }

        DefaultToolButton {
            objectName: "plotSaveButton"
            enabled: plot.filled
            text: "Save as CSV"
            onClicked: question.ask({
                "title": "Save the readings",
                "selectExisting": false,
                "defaultSuffix": "csv",
                "nameFilters": ["Tables (*.csv)", "All files (*)"]
            })
        }
    }

    BodyText {
        id: outcome

        width: parent.width
        visible: text.length > 0
        color: Theme.error
        wrapMode: Text.Wrap
    }

    FileQuestion {
        id: question

        onChosen: outcome.text = plot.save(file)
    }

    Connections {
        target: varkel_manager.history
        enabled: plot.visible

        function onChanged() {
            plot.refresh();
        }
    }

    Connections {
        target: varkel_manager

        function onLidarModelChanged() {
            plot.pinned = [];
        }
    }
}
