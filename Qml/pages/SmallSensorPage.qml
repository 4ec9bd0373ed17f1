import QtQuick 2.15
import "../assembly"

// The small sensors' page, connected to the controller's command console.
Zelto {
    property Item view // main.qml's

    selectedModel: view.model
    onLogRequested: view.openLog()
    onRefused: view.callErrorInfoWindow(message)
    onUpgradeRequested: view.confirmUpgrade(file, mode, varkel_manager.ZeltoLidarVersionInfo, start)
    commands.history: varkel_manager.SendCommandHistory
    commands.replyHeader: varkel_manager.SendKtcCommandReturnHeader
    commands.replyPayload: varkel_manager.SendKtcCommandReturnPayload
    commands.onSend: varkel_manager.SendCommandInBackground(code, payload)
}
