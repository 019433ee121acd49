import QtQuick
import Varnel

// Asks before anything goes to a provider for the first time.
Item {
    id: bar

    signal answered

    height: column.height + Theme.gap

    Column {
        id: column

        Accessible.name: question.text
        Accessible.role: Accessible.AlertMessage
        anchors.left: parent.left
        anchors.leftMargin: Theme.gutter
        anchors.right: parent.right
        anchors.rightMargin: Theme.gutter
        spacing: Theme.gap

        PlainText {
            id: question

            text: qsTr("%1 is a cloud service: the messages and attachments of this conversation leave this computer.").arg(
                      ComposerState.cloudName)
            width: parent.width
            wrapMode: Text.Wrap
        }
        Row {
            spacing: Theme.gap

            PlainButton {
                id: agree

                primary: true
                text: qsTr("Send to %1").arg(ComposerState.cloudName)
                onClicked: {
                    ComposerState.agreeToCloud()
                    bar.answered()
                }
            }
            PlainButton {
                outlined: true
                text: qsTr("Do not send")
                onClicked: {
                    ComposerState.refuseCloud()
                    bar.answered()
                }
            }
        }
    }
    Connections {
        function onCloudAsked() {
            agree.forceActiveFocus(Qt.OtherFocusReason)
        }

        target: ComposerState
    }
}
