import QtQuick
import Varnel

// Where Ollama runs, and what it takes to reach it there.
Column {
    id: fields

    Accessible.name: qsTr("Where Ollama runs")
    Accessible.role: Accessible.Grouping
    spacing: Theme.gap
    width: parent ? parent.width : 0

    PlainChoice {
        checked: ConnectionEditor.mode === ConnectionEditor.ThisComputer
        detail: qsTr("Ollama answers at port 11434 of this computer")
        text: qsTr("This computer")
        width: parent.width
        onClicked: ConnectionEditor.mode = ConnectionEditor.ThisComputer
    }
    PlainChoice {
        checked: ConnectionEditor.mode === ConnectionEditor.Tunnel
        detail: qsTr("Ollama on another computer, reached through a tunnel that Varnel opens")
        text: qsTr("SSH tunnel")
        width: parent.width
        onClicked: ConnectionEditor.mode = ConnectionEditor.Tunnel
    }
    PlainChoice {
        checked: ConnectionEditor.mode === ConnectionEditor.Url
        detail: qsTr("Ollama answers at an address of the network")
        text: qsTr("URL")
        width: parent.width
        onClicked: ConnectionEditor.mode = ConnectionEditor.Url
    }
    SettingsField {
        label: qsTr("URL")
        placeholder: "http://127.0.0.1:11434"
        value: ConnectionEditor.url
        visible: ConnectionEditor.mode === ConnectionEditor.Url
        onEdited: text => ConnectionEditor.url = text
        onFinished: ConnectionEditor.apply()
    }
    TunnelFields {
        visible: ConnectionEditor.mode === ConnectionEditor.Tunnel
    }
}
