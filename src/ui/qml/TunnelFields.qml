import QtQuick
import Varnel

// What ssh has to know to open the tunnel.
Column {
    id: fields

    spacing: Theme.gap
    width: parent ? parent.width : 0

    SettingsField {
        label: qsTr("Host")
        placeholder: qsTr("Name, address or ssh alias")
        value: ConnectionEditor.sshHost
        onEdited: text => ConnectionEditor.sshHost = text
        onFinished: ConnectionEditor.apply()
    }
    SettingsField {
        label: qsTr("User")
        value: ConnectionEditor.sshUser
        onEdited: text => ConnectionEditor.sshUser = text
        onFinished: ConnectionEditor.apply()
    }
    SettingsField {
        hint: qsTr("On this computer, from 1 to 65535")
        label: qsTr("Local port")
        value: ConnectionEditor.localPort
        onEdited: text => ConnectionEditor.localPort = text
        onFinished: ConnectionEditor.apply()
    }
    SettingsField {
        hint: qsTr("Where Ollama answers, seen from the host")
        label: qsTr("Remote bind")
        placeholder: "127.0.0.1:11434"
        value: ConnectionEditor.remoteBind
        onEdited: text => ConnectionEditor.remoteBind = text
        onFinished: ConnectionEditor.apply()
    }
    SettingsField {
        label: qsTr("Identity file")
        placeholder: qsTr("Optional")
        trailing: browse
        value: ConnectionEditor.identityFile
        onEdited: text => ConnectionEditor.identityFile = text
        onFinished: ConnectionEditor.apply()

        PlainButton {
            id: browse

            anchors.right: parent.right
            hint: qsTr("Choose the identity file")
            outlined: true
            text: qsTr("Browse…")
            onClicked: dialog.ask()
        }
    }
    PasswordFields {
    }
    DialogLoader {
        id: dialog

        dialog: "IdentityFileDialog.qml"
    }
}
