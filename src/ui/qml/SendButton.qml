import QtQuick
import Varnel

// Sends the prompt; while a reply runs, or is made ready, the same place stops it.
PlainButton {
    id: button

    // The keyboard belongs to the text again.
    signal used

    Accessible.name: AppModel.isBusy ? qsTr("Stop") : qsTr("Send")
    enabled: AppModel.isBusy || ComposerState.canSend
    hint: AppModel.isBusy ? qsTr("Stop (Esc)") : ComposerState.sendsWithControl
                            ? qsTr("Send (%1)").arg(Appearance.nativeKeys("Ctrl+Enter")) : qsTr("Send (Enter)")
    iconName: AppModel.isBusy ? "stop" : "send"
    primary: true
    onClicked: {
        if (AppModel.isBusy)
            AppModel.stop()
        else
            ComposerState.send()
        used()
    }
}
