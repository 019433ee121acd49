import QtQuick
import Varnel

// Says that the text below is an earlier prompt, and what can become of it.
Item {
    id: bar

    signal ended

    height: flow.height + Theme.unit

    Flow {
        id: flow

        Accessible.name: qsTr("Editing an earlier prompt")
        Accessible.role: Accessible.Grouping
        anchors.left: parent.left
        anchors.leftMargin: Theme.gutter
        anchors.right: parent.right
        anchors.rightMargin: Theme.gap
        spacing: Theme.gap

        PlainText {
            color: Theme.accent
            font: Theme.uiStrongFont
            height: Theme.control
            text: qsTr("Editing an earlier prompt")
        }
        PlainButton {
            enabled: ComposerState.canSend
            outlined: true
            text: PromptEdit.sendLabel
            onClicked: {
                ComposerState.send()
                bar.ended()
            }
        }
        PlainButton {
            outlined: true
            text: qsTr("Fork to a new conversation")
            onClicked: {
                PromptEdit.fork()
                bar.ended()
            }
        }
        PlainButton {
            hint: qsTr("Leave the prompt as it is (Esc)")
            text: qsTr("Cancel")
            onClicked: {
                PromptEdit.cancel()
                bar.ended()
            }
        }
    }
}
