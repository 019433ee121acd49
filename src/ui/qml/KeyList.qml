import QtQuick
import Varnel

// The keys of the providers and of the search services.
Column {
    id: keys

    spacing: Theme.paragraph
    width: parent ? parent.width : 0
    Component.onCompleted: KeyListModel.refresh()

    SettingsNote {
        text: "A provider is listed only when a key is saved in the Keychain or set in the environment. A saved key is used before an environment variable."
    }
    Repeater {
        model: KeyListModel

        KeyEntry {
        }
    }
}
