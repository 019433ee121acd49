import QtQuick
import Varnel

// What new conversations begin with.
SettingsPage {
    id: page

    signal modelsAsked

    title: qsTr("Models")

    SettingsHeading {
        text: qsTr("New conversations")
    }
    ValueField {
        label: qsTr("Default model")
        trailing: choose
        value: PreferenceEditor.defaultModel
        onStored: text => PreferenceEditor.defaultModel = text

        PlainButton {
            id: choose

            anchors.right: parent.right
            hint: qsTr("Look through the models (%1)").arg(Appearance.nativeKeys("Ctrl+M"))
            outlined: true
            text: qsTr("Models…")
            onClicked: page.modelsAsked()
        }
    }
    ValueField {
        hint: qsTr("How freely the model chooses its words, from 0 to 2")
        label: qsTr("Temperature")
        value: PreferenceEditor.temperature
        onStored: text => PreferenceEditor.temperature = text
    }
    ValueField {
        hint: qsTr("How much the model keeps in view, from 512 to 131072 tokens")
        label: qsTr("Context length")
        value: PreferenceEditor.contextLength
        onStored: text => PreferenceEditor.contextLength = text
    }
    ValueField {
        hint: qsTr("How long the server keeps a model in memory: 30s, 5m, 1h; 0 is not at all, -1m for ever")
        label: qsTr("Keep-alive")
        value: PreferenceEditor.keepAlive
        onStored: text => PreferenceEditor.keepAlive = text
    }
    SettingsNote {
        text: qsTr("Conversations that exist keep what they were given.")
    }
    PlainText {
        color: Theme.error
        text: PreferenceEditor.problem
        visible: text.length > 0
        width: parent.width
        wrapMode: Text.Wrap
    }
    SettingsHeading {
        text: qsTr("Kind of work")
    }
    PlainSwitch {
        checked: PreferenceEditor.contextButton
        detail: qsTr("Chat, coding, reasoning or vision: switches to the largest model for it")
        text: qsTr("Show the work context button")
        width: parent.width
        onToggled: PreferenceEditor.contextButton = checked
    }
}
