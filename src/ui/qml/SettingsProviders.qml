import QtQuick
import Varnel

// The cloud providers: whether they may be used at all, with which keys, and which of their models are offered.
SettingsPage {
    title: qsTr("Providers")

    PlainSwitch {
        checked: PreferenceEditor.passthrough
        detail: qsTr("A conversation may then be sent to a provider. Without this, every message stays on Ollama.")
        text: qsTr("Remote passthrough")
        width: parent.width
        onToggled: PreferenceEditor.passthrough = checked
    }
    SettingsHeading {
        text: qsTr("Keys")
    }
    KeyList {
    }
    SettingsHeading {
        text: qsTr("Models in menus")
    }
    Column {
        spacing: Theme.unit
        width: parent.width

        Repeater {
            model: ProviderModelList

            Column {
                id: entry

                required property bool first
                required property int index
                required property string name
                required property string provider
                required property bool shown

                width: parent ? parent.width : 0

                SettingsNote {
                    text: entry.provider
                    topPadding: Theme.gap
                    visible: entry.first
                }
                PlainSwitch {
                    Accessible.description: entry.provider
                    checked: entry.shown
                    text: entry.name
                    width: parent.width
                    onToggled: ProviderModelList.setShown(entry.index, checked)
                }
            }
        }
    }
}
