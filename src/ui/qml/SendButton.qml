import QtQuick
import Varnel

// Sends the prompt; while a reply runs the same place stops it.
PlainButton {
    id: button

    // The keyboard belongs to the text again.
    signal used

    Accessible.name: AppModel.isStreaming ? qsTr("Stop") : qsTr("Send")
    enabled: AppModel.isStreaming || ComposerState.canSend
    hint: AppModel.isStreaming ? qsTr("Stop (Esc)") : ComposerState.sendsWithControl ? qsTr("Send (Ctrl+Enter)") : qsTr("Send (Enter)")
    iconName: AppModel.isStreaming ? "stop" : "send"
    primary: true
    onClicked: {
        if (AppModel.isStreaming)
            AppModel.stop()
        else
            ComposerState.send()
        used()
    }
}
