import QtQuick 2.15
import Varkel.Shell 1.0
import "assembly"
import "pages"

// The main window's content. It turns what the controller says into pages, notices and log lines.
Rectangle {
    id: root

    property var pageTitles: []
    property var pageLists: []
    property int currentPage: 0
    property bool modelCheckDue: false
    readonly property bool table: varkel_manager.connectType === 0
    readonly property var tabTitles: pageTitles.concat(["Log", "Send Command"])
    // Not a child: the program's window stays its owner, as the view that runs this is no window of its own.
    readonly property LogWindow logWindow: LogWindow {
        onByteFlowToggled: varkel_manager.SetLogBytesFlowStatus(on)
        onFailed: root.callErrorInfoWindow(message)
    }
    readonly property bool busy: watch.connecting || varkel_manager.isReadingPage || varkel_manager.isWorking

    function callMessageWindow(msg, btn_text = "OK", module_name = "") {
        if (msg === "") {
            return;
        }
        if (btn_text === "Continue" && module_name !== "") {
            messageWindow.notify("The " + msg + "set by the user was detected to be outside the range "
                                 + "specified in the config file. Do you wish to continue?", btn_text,
                                 module_name);
        } else {
            messageWindow.notify(msg, btn_text);
        }
    }

    function callErrorInfoWindow(msg) {
        if (msg !== "") {
            errorWindow.notify(msg);
        }
    }

    function callSuccessInfoWindow(msg) {
        if (msg !== "") {
            successWindow.notify(msg);
        }
    }

    function printLog(msg, type = "INFO") {
        if (msg === "") {
            return;
        }
        switch (type) {
        case "ERROR":
            root.logWindow.printError(msg);
            break;
        case "WARNING":
            root.logWindow.printWarning(msg);
            break;
        case "BYTES":
        case "BYTE":
            root.logWindow.printBytes(msg);
            break;
        default:
            root.logWindow.printInfo(msg);
        }
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
                varkel_manager.Stop();
            }
        } else {
            watch.connecting = varkel_manager.ConnectLidar();
        }
    }

    function changeModel(name) {
        printLog("Current selected model is " + name, "INFO");
        varkel_manager.InitConfigFileParser(name);
        varkel_manager.UpdateUI();
    }

    // The page is read again when the save has ended.
    function saveModule(module) {
        varkel_manager.RunInBackground(module);
    }

    function requestSave(module) {
        var page = pages.pageOf(module);
        page.outOfRangeNames = [];
        if (!varkel_manager.IsConnected) {
            callSuccessInfoWindow("Please connect to lidar first");
        } else if (varkel_manager.getSetMapSize() === 0) {
            callSuccessInfoWindow("Nothing to be saved");
        } else if (!varkel_manager.CheckModuleVarsWithinRange(module)) {
            var names = page.outOfRangeNames.length > 0
                        ? page.outOfRangeNames.map(name => PlainText.line(name)).join(", ") : "Some item";
            callMessageWindow(names + " ", "Continue", String(module));
        } else {
            saveModule(module);
        }
    }

    objectName: "mainView"
    color: Theme.window

    Component.onCompleted: {
        pageLists = varkel_manager.level2List;
        pageTitles = varkel_manager.level1List;
        varkel_manager.setModuleIndexUse(0);
        topBar.takeFocus();
    }

    TopBar {
        id: topBar

        width: parent.width
        onConnectRequested: root.pressConnect()
        onModelChosen: root.changeModel(name)
        onAboutRequested: aboutWindow.show()
    }

    LoadingWidget {
        objectName: "loadingBar"
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: topBar.bottom
        running: root.busy
    }

    TabWidget {
        id: tabs

        objectName: "tabs"
        anchors.left: parent.left
        anchors.top: topBar.bottom
        anchors.bottom: parent.bottom
        width: Theme.sideBarWidth
        visible: root.table
        titles: root.tabTitles
        currentIndex: root.currentPage
        onChosen: root.choosePage(index)
    }

    ModelPages {
        id: pages

        objectName: "pages"
        anchors.left: tabs.right
        anchors.right: parent.right
        anchors.top: topBar.bottom
        anchors.bottom: parent.bottom
        visible: root.table
        titles: root.pageTitles
        lists: root.pageLists
        currentIndex: root.currentPage
        onCancelRequested: {
            varkel_manager.ClearSetMap();
            varkel_manager.ReadPageInBackground(module);
        }
        onSaveRequested: root.requestSave(module)
        onRefused: root.callErrorInfoWindow(message)
        onLogRequested: root.logWindow.present()
    }

    Loader {
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: topBar.bottom
        anchors.bottom: parent.bottom
        active: !root.table
        visible: active
        sourceComponent: Zelto {
            selectedModel: topBar.model
            commands.history: varkel_manager.SendCommandHistory
            commands.replyHeader: varkel_manager.SendKtcCommandReturnHeader
            commands.replyPayload: varkel_manager.SendKtcCommandReturnPayload
            commands.onSend: varkel_manager.SendCommandInBackground(code, payload)
            onLogRequested: root.logWindow.present()
        }
    }

    MessageWindow {
        id: messageWindow

        onAccepted: {
            if (context !== null) {
                root.saveModule(Number(context));
            }
        }
    }

    ErrorInfoWindow {
        id: errorWindow
    }

    SuccessInfoWindow {
        id: successWindow
    }

    AboutWindow {
        id: aboutWindow
    }

    PageShortcuts {
        onChosen: root.choosePage(index)
    }

    ModelCheck {
        id: modelCheck
    }

    ConnectionWatch {
        id: watch

        onLost: {
            root.printLog("The sensor does not answer any more, so the connection is closed.", "WARNING");
            root.pressConnect();
        }
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
            root.callSuccessInfoWindow(varkel_manager.successMessage);
            varkel_manager.setSuccessMsg("");
        }

        function onSomeVarOutOfRange(var_name) {
            var page = pages.pageOf(root.currentPage);
            if (page) {
                page.markOutOfRange(var_name);
            }
        }

        function onIsConnectedChanged() {
            root.modelCheckDue = varkel_manager.IsConnected && root.table;
            if (root.modelCheckDue) {
                varkel_manager.ReadPageInBackground(0);
            }
        }

        function onPageReadFinished(module) {
            if (root.modelCheckDue && module === 0 && varkel_manager.IsConnected) {
                root.modelCheckDue = false;
                root.callErrorInfoWindow(modelCheck.warning(varkel_manager.getLidarPN(),
                                                            varkel_manager.getLidarSN(), topBar.model));
                if (root.currentPage !== 0) {
                    root.readCurrentPage();
                }
            }
        }

        function onPageWriteFinished(module) {
            varkel_manager.ReadPageInBackground(module);
        }

        function onLidarClearModel() {
            root.pageTitles = [];
            root.currentPage = 0;
        }

        function onLidarModelChanged() {
            root.pageLists = varkel_manager.level2List;
        }

        function onLidarShowModel() {
            root.pageTitles = varkel_manager.level1List;
            varkel_manager.setModuleIndexUse(0);
        }
    }
}
