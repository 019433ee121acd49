import QtQuick
import Varnel

// The kinds of work; each brings the installed model that suits it best.
PlainMenu {
    PlainMenuItem {
        checked: ConversationSettings.work === ConversationSettings.Work.Chat
        text: qsTr("Chat")
        onTriggered: ConversationSettings.chooseWork(ConversationSettings.Work.Chat)
    }
    PlainMenuItem {
        checked: ConversationSettings.work === ConversationSettings.Work.Coding
        text: qsTr("Coding")
        onTriggered: ConversationSettings.chooseWork(ConversationSettings.Work.Coding)
    }
    PlainMenuItem {
        checked: ConversationSettings.work === ConversationSettings.Work.Reasoning
        text: qsTr("Reasoning")
        onTriggered: ConversationSettings.chooseWork(ConversationSettings.Work.Reasoning)
    }
    PlainMenuItem {
        checked: ConversationSettings.work === ConversationSettings.Work.Vision
        text: qsTr("Vision")
        onTriggered: ConversationSettings.chooseWork(ConversationSettings.Work.Vision)
    }
}
