import QtQuick
import Varnel

// What the model may search the web with, and where its queries go.
PlainMenu {
    id: menu

    implicitWidth: Theme.px(420)

    MenuHeading {
        text: qsTr("Let the model look up current public information")
    }
    ExplainedMenuItem {
        checked: ConversationSettings.search === ConversationSettings.Search.Off
        detail: qsTr("The model answers from what it knows")
        text: qsTr("No search")
        onTriggered: ConversationSettings.search = ConversationSettings.Search.Off
    }
    ExplainedMenuItem {
        checked: ConversationSettings.search === ConversationSettings.Search.Ollama
        detail: qsTr("Queries go to Ollama’s web search service, with its key")
        text: qsTr("Ollama search")
        onTriggered: ConversationSettings.search = ConversationSettings.Search.Ollama
    }
    ExplainedMenuItem {
        checked: ConversationSettings.search === ConversationSettings.Search.Brave
        detail: qsTr("Queries go to Brave Search, with its key")
        text: qsTr("Brave search")
        onTriggered: ConversationSettings.search = ConversationSettings.Search.Brave
    }
    ExplainedMenuItem {
        checked: ConversationSettings.search === ConversationSettings.Search.Provider
        detail: ConversationSettings.providerSearchDetail
        text: ConversationSettings.providerSearchLabel
        onTriggered: ConversationSettings.search = ConversationSettings.Search.Provider
    }
    MenuHeading {
        quiet: true
        text: qsTr("A search query leaves this computer. Keys are in Settings → Providers.")
    }
}
