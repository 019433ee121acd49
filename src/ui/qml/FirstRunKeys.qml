import QtQuick
import Varnel

// The keys, for those who have some.
SettingsPage {
    title: qsTr("Keys")

    SettingsNote {
        text: qsTr("Everything works with Ollama alone. With a key, a conversation can also be sent to a cloud provider, or look things up on the web.")
    }
    PlainSwitch {
        checked: PreferenceEditor.passthrough
        detail: qsTr("A conversation may then be sent to a provider. Without this, every message stays on Ollama.")
        text: qsTr("Remote passthrough")
        width: parent.width
        onToggled: PreferenceEditor.passthrough = checked
    }
    KeyList {
    }
}
