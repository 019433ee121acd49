import QtQuick
import Varnel

// Whether the server answers, and what to look at when it does not.
SettingsPage {
    title: qsTr("Whether Ollama answers")

    ConnectionResult {
    }
    PlainButton {
        outlined: true
        text: Link.connected ? qsTr("Test again") : qsTr("Try again")
        onClicked: ConnectionEditor.open()
    }
    SettingsNote {
        text: qsTr("Ollama has to be installed and running there. On its computer, “ollama serve” starts it.")
        visible: Link.offline
    }
    SettingsNote {
        text: qsTr("ssh has to know the host already: connect once in a terminal, and its key is accepted there.")
        visible: Link.offline && ConnectionEditor.mode === ConnectionEditor.Tunnel
    }
}
