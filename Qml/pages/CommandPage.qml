import QtQuick 2.15
import QtQuick.Templates 2.15 as T
import "../assembly"

// The page of the raw command console.
Flickable {
    id: page

    objectName: "commandPage"
    contentHeight: widget.height + 2 * Theme.margin
    boundsBehavior: Flickable.StopAtBounds
    clip: true
    T.ScrollBar.vertical: DefaultScrollBar {}

    Accessible.role: Accessible.Pane
    Accessible.name: "Send Command"

    GetCmdWidget {
        id: widget

        x: Theme.margin
        y: Theme.margin
        width: page.width * Theme.rowShare
        history: varkel_manager.SendCommandHistory
        replyHeader: varkel_manager.SendKtcCommandReturnHeader
        replyPayload: varkel_manager.SendKtcCommandReturnPayload
        replyDecoded: varkel_manager.decodedReply
        ready: varkel_manager.IsConnected || varkel_manager.connectType !== 0
        onSend: varkel_manager.SendCommandInBackground(code, payload)
    }
}
