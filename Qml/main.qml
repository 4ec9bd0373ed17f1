import QtQuick 2.15
import Varkel.Shell 1.0
import "assembly"
import "pages"

// The main window's content. It turns the controller's signals into pages, notices and log lines. The first
// frame shows the bar and the list of pages; their content is created once that frame is on the screen.
Rectangle {
    id: root

    property var pageTitles: []
    property int currentPage: 0
    property bool modelCheckDue: false
    property bool saving: false
    property string lastSuccess
    property string lastOutcome // what the last notice said
    property string lastOutcomeType
    property string lastLine // of the log
    property string noticeLine // the text of a notice, which may also arrive as a log line
    property var outOfRangeNames: [] // found by the current check
    property bool shown: false // set when the first frame is on the screen
    readonly property bool complete: topBar.complete && body.item !== null
    readonly property string model: topBar.model
    readonly property bool table: varkel_manager.connectType === 0
    readonly property var tabTitles: pageTitles.concat(["Log", "Send Command", "Snapshots"])
    property var notices: ({})
    property var ahead: [] // the types loaded by loadAhead, kept until they are used
    property var logWindow: null // created when first opened

    // Loads the types needed after the first frame on another thread while that frame is being created.
    function loadAhead() {
        var files = ["pages/ConnectionBar", "pages/Body"];
        ahead = files.map(file => Qt.createComponent(file + ".qml", Component.Asynchronous));
    }

    // Notice windows are created when first needed.
    function notice(type) {
        if (!notices[type]) {
            notices[type] = Qt.createComponent("assembly/" + type + ".qml").createObject(root);
            notices[type].accepted.connect(next => next && next());
        }
        return notices[type];
    }

    function callMessageWindow(msg, btn_text = "OK", module_name = "") {
        if (msg === "") {
            return;
        }
        var message = notice("MessageWindow");
        if (btn_text === "Continue" && module_name !== "") {
            message.notify("The " + msg + "set by the user was detected to be outside the range "
                           + "specified in the config file. Do you wish to continue?\n\n"
                           + varkel_manager.edits.outOfRange(Number(module_name)).join("\n"), btn_text,
                           () => saveReadFields(Number(module_name)));
        } else {
            message.notify(msg, btn_text);
        }
    }

    function callErrorInfoWindow(msg, heading = "") {
        if (msg !== "") {
            var warning = msg.startsWith("WARNING");
            record(msg, warning ? "WARNING" : "ERROR");
            notice("ErrorInfoWindow").notify(msg, "", null, heading !== "" ? heading
                                             : warning ? "Warning"
                                             : /^(SET \[|Set Failed)/.test(msg) ? "Not saved" : "");
        }
    }

    function callSuccessInfoWindow(msg) {
        if (msg !== "") {
            record(msg, "INFO");
            notice("SuccessInfoWindow").notify(msg, "", null, msg.startsWith("Set Lidar") ? "Saved" : "");
        }
    }

    // Uses the success window to say why something was not done.
    function callNoteWindow(msg) {
        record(msg, "INFO");
        notice("SuccessInfoWindow").note(msg);
    }

    // Asks before something that can't be undone; the button names it.
    function confirm(text, button, next) {
        notice("MessageWindow").notify(text, button, next);
    }

    // The sensor that an action is for: "the sensor at 192.168.1.201:9347, Quenta, SN 123".
    function sensorName() {
        return "the sensor at " + body.item.sensorName();
    }

    function confirmUpgrade(file, mode, versions, next) {
        var size = varkel_manager.packageSize(file);
        var lines = ["Upgrade " + sensorName() + "?", "",
                     "Package: " + PlainText.line(decodeURIComponent(file.toString().replace(/^.*\//, ""))),
                     "Size: " + (size < 0 ? "the file can't be read" : size.toLocaleString(Qt.locale("en_US"), "f", 0) + " bytes")];
        if (mode !== "") {
            lines.push("Mode: " + mode);
        }
        versions.forEach(version => lines.push(PlainText.line(version.label + ": " + version.value)));
        confirm(lines.join("\n"), "Upgrade", next);
    }

    // Logs the text of a notice, unless whatever reported it has just logged it.
    function record(msg, type) {
        lastOutcome = msg;
        lastOutcomeType = type;
        if (msg !== lastLine) {
            printLog(msg, type);
            noticeLine = msg;
        }
    }

    function printLog(msg, type = "INFO") {
        if (msg === "" || msg === noticeLine) {
            noticeLine = "";
            return;
        }
        if (!type.startsWith("BYTE")) {
            lastLine = msg;
        }
        switch (type) {
        case "ERROR":
            log.append(LogModel.Error, msg);
            break;
        case "WARNING":
            log.append(LogModel.Warning, msg);
            break;
        case "BYTES":
        case "BYTE":
            log.append(LogModel.Bytes, msg);
            break;
        default:
            log.append(LogModel.Info, msg);
        }
    }

    function openLog() {
        if (!logWindow) {
            // Its owner is the program's window, because the view that runs this is not a window itself.
            logWindow = Qt.createComponent("assembly/LogWindow.qml").createObject(windows, {
                "log": log,
                "transientParent": owner_window
            });
            logWindow.byteFlowToggled.connect(on => varkel_manager.SetLogBytesFlowStatus(on));
            logWindow.failed.connect(callErrorInfoWindow);
            logWindow.decode = varkel_manager.decodedLogLines;
            logWindow.recording = Qt.binding(() => varkel_manager.isRecording);
            logWindow.recordRequested.connect(file => callErrorInfoWindow(varkel_manager.StartRecording(file)));
            logWindow.recordingEnded.connect(varkel_manager.StopRecording);
        }
        logWindow.present();
    }

    function choosePage(index) {
        if (index < 0 || index >= tabTitles.length || !table) {
            return;
        }
        currentPage = index;
        if (index < pageTitles.length) {
            varkel_manager.setModuleIndexUse(index);
            readCurrentPage();
        }
    }

    function readCurrentPage() {
        if (varkel_manager.IsConnected && currentPage < pageTitles.length) {
            varkel_manager.ReadPageInBackground(currentPage);
        }
    }

    function pressConnect() {
        if (varkel_manager.GetIsConnectingLidar()) {
            callErrorInfoWindow("Is Connecting Lidar... Please wait.");
        } else if (varkel_manager.IsConnected) {
            if (varkel_manager.IsUpgrading) {
                callErrorInfoWindow("Disconnect REJECTED. Lidar is upgrading.");
            } else {
                confirmDiscard("Disconnecting", "Disconnect", disconnect);
            }
        } else {
            body.item.connecting = varkel_manager.ConnectLidar();
        }
    }

    // Same as a click on the button, which also commits what is being typed.
    function pressConnectButton() {
        topBar.pressConnect();
    }

    function disconnect() {
        varkel_manager.Stop();
    }

    // Asks before an action that discards the user's edits.
    function confirmDiscard(act, button, next) {
        var edits = varkel_manager.edits.all;
        if (edits.length === 0) {
            next();
            return;
        }
        var shown = edits.slice(0, Theme.listedEdits).map(edit => edit.label + ": " + edit.from + " → " + edit.to);
        if (edits.length > shown.length) {
            shown.push("and " + (edits.length - shown.length) + " more");
        }
        notice("MessageWindow").notify(act + " discards the unsaved changes:\n\n"
                                       + shown.map(line => PlainText.line(line)).join("\n"), button, next);
    }

    function changeModel(name) {
        confirmDiscard("Changing the model", "Change model", () => selectModel(name));
    }

    function selectModel(name) {
        topBar.selectModel(name);
        printLog("Current selected model is " + name, "INFO");
        varkel_manager.InitConfigFileParser(name);
        varkel_manager.UpdateUI();
    }

    // The default place of the focus: a control that does not accept typed text.
    function takeFocus() {
        if (table) {
            tabs.takeFocus();
        } else {
            topBar.takeFocus();
        }
    }

    // The page is read again after the save.
    function saveModule(module) {
        saving = true;
        varkel_manager.RunInBackground(module);
    }

    // Asks first if the save would also write fields that have never been read.
    function saveReadFields(module) {
        var names = varkel_manager.unreadFields(module);
        if (names.length === 0) {
            saveModule(module);
            return;
        }
        notice("MessageWindow").notify("Saving also writes fields that have never been read from this sensor, with "
                                       + "the values shown here: " + listed(names) + ". Do you wish to continue?",
                                       "Continue", () => saveModule(module));
    }

    // Shown in the notice of the save. Once that is closed, only a value other than the one sent opens a new notice.
    function showSaveOutcome(outcome, differs) {
        var text = "Read back: " + outcome;
        if (!notice("SuccessInfoWindow").amend(lastSuccess, text, differs ? "Warning" : "") && differs) {
            callNoteWindow(text);
        }
    }

    // Shown in the notice of the upgrade while that is open, otherwise in a notice of its own.
    function showUpgradeOutcome(text, back) {
        record(text, back ? "INFO" : "WARNING");
        var window = notice("SuccessInfoWindow");
        if (!window.amend(lastSuccess, text, back ? "" : "Warning")) {
            back ? window.notify(text) : window.note(text);
        }
    }

    function listed(names) {
        return names.map(name => PlainText.line(name)).join(", ");
    }

    function requestSave(module) {
        outOfRangeNames = [];
        if (!varkel_manager.IsConnected) {
            callNoteWindow("Please connect to lidar first");
        } else if (varkel_manager.getSetMapSize() === 0 || !varkel_manager.edits.hasCommands(module)) {
            callNoteWindow("Nothing to be saved"); // the edits of other pages stay
        } else if (varkel_manager.edits.faults(module).length > 0) {
            callErrorInfoWindow(varkel_manager.edits.faults(module).join("\n"), "Not saved");
        } else if (!varkel_manager.CheckModuleVarsWithinRange(module)) {
            var names = outOfRangeNames.length > 0 ? listed(outOfRangeNames) : "Some item";
            callMessageWindow(names + " ", "Continue", String(module));
        } else {
            saveReadFields(module);
        }
    }

    objectName: "mainView"
    color: Theme.window

    onShownChanged: {
        topBar.fill();
        if (!Object.values(notices).some(notice => notice.visible)) {
            takeFocus();
        }
        body.setSource("pages/Body.qml", { "view": root });
        ahead = [];
    }

    Component.onCompleted: {
        loadAhead();
        pageTitles = varkel_manager.level1List;
        varkel_manager.setModuleIndexUse(0);
    }

    LogModel {
        id: log
    }

    QtObject {
        id: windows
    }

    TopBar {
        id: topBar

        width: parent.width
        onConnectRequested: root.pressConnect()
        onModelChosen: root.changeModel(name)
        onRestartRequested: root.confirm("Restart " + root.sensorName() + "?\n\nThe connection will be closed, and "
                                         + "unsaved changes will be lost.", "Restart",
                                         () => varkel_manager.RestartInBackground())
        onResetRequested: root.confirm("Reset all settings of " + root.sensorName() + "?\n\nThis can't be undone. The sensor's "
                                       + "address may change.", "Reset", () => varkel_manager.ResetInBackground())
        onAboutRequested: root.notice("AboutWindow").show()
    }

    TabWidget {
        id: tabs

        objectName: "tabs"
        anchors.left: parent.left
        anchors.top: topBar.bottom
        anchors.bottom: parent.bottom
        anchors.bottomMargin: Theme.statusHeight
        width: Theme.sideBarWidth
        visible: root.table
        titles: root.tabTitles
        edits: varkel_manager.edits.counts
        currentIndex: root.currentPage
        onChosen: root.choosePage(index)
    }

    Loader {
        id: body

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: topBar.bottom
        anchors.bottom: parent.bottom
    }

    Connections {
        target: varkel_manager

        function onSendLogMessage(msg, type) {
            root.printLog(msg, type);
        }

        function onErrorMessageChanged() {
            root.callErrorInfoWindow(varkel_manager.errorMessage);
            varkel_manager.setErrorMsg("");
        }

        function onSuccessMessageChanged() {
            root.lastSuccess = varkel_manager.successMessage;
            root.callSuccessInfoWindow(root.lastSuccess);
            varkel_manager.setSuccessMsg("");
        }

        function onSomeVarOutOfRange(var_name) {
            root.outOfRangeNames = root.outOfRangeNames.concat([var_name]);
        }

        function onIsConnectedChanged() {
            root.modelCheckDue = varkel_manager.IsConnected && root.table;
            if (root.modelCheckDue) {
                varkel_manager.ReadPageInBackground(0);
            }
        }

        function onPageReadFinished(module) {
            if (root.modelCheckDue && root.complete && module === 0 && varkel_manager.IsConnected) {
                root.modelCheckDue = false;
                root.callErrorInfoWindow(body.item.modelWarning());
                if (root.currentPage !== 0) {
                    root.readCurrentPage();
                }
            }
        }

        function onPageWriteFinished(module) {
            root.saving = false;
            varkel_manager.ReadPageInBackground(module);
        }

        function onSaveReadBack(module, outcome, differs) {
            root.showSaveOutcome(outcome, differs);
        }

        function onLidarClearModel() {
            root.pageTitles = [];
            root.currentPage = 0;
        }

        function onLidarShowModel() {
            root.pageTitles = varkel_manager.level1List;
            varkel_manager.setModuleIndexUse(0);
        }
    }
}
