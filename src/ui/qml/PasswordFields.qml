import QtQuick
import Varnel

// The password that ssh may be given. It stands here only until it is saved.
Column {
    id: password

    spacing: Theme.gap
    width: parent ? parent.width : 0
    Component.onCompleted: if (visible)
        ConnectionEditor.readPassword()
    onVisibleChanged: if (visible)
        ConnectionEditor.readPassword()
    Component.onDestruction: field.clear()

    function save() {
        ConnectionEditor.savePassword(field.text)
        field.clear()
    }

    Item {
        height: Theme.control
        width: parent.width

        PlainText {
            Accessible.ignored: true
            anchors.left: parent.left
            height: Theme.control
            text: qsTr("Password")
            width: Theme.px(150) - Theme.paragraph
        }
        PlainField {
            id: field

            Accessible.name: qsTr("Password")
            anchors.left: parent.left
            anchors.leftMargin: Theme.px(150)
            anchors.right: saveButton.left
            anchors.rightMargin: Theme.gap
            echoMode: TextInput.Password
            fill: Theme.popup
            inputMethodHints: Qt.ImhSensitiveData | Qt.ImhNoPredictiveText
            maximumLength: 1000
            placeholderText: ConnectionEditor.passwordSaved ? "Saved in Keychain" : qsTr("Optional")
            onAccepted: password.save()
        }
        PlainButton {
            id: saveButton

            anchors.right: clearButton.left
            anchors.rightMargin: Theme.gap
            enabled: field.length > 0
            outlined: true
            text: qsTr("Save")
            onClicked: password.save()
        }
        PlainButton {
            id: clearButton

            anchors.right: parent.right
            enabled: ConnectionEditor.passwordSaved || field.length > 0
            outlined: true
            text: qsTr("Clear")
            onClicked: {
                field.clear()
                ConnectionEditor.clearPassword()
            }
        }
    }
    PlainText {
        color: Theme.error
        text: ConnectionEditor.passwordProblem
        visible: text.length > 0
        width: parent.width
        wrapMode: Text.Wrap
    }
    SettingsNote {
        text: "The key path is optional. A saved password stays in the Keychain and is used only when Connect opens the tunnel. With neither, SSH uses the keys and config already on this Mac."
    }
}
