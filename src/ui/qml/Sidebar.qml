import QtQuick
import Varnel

// The conversations: search, a new one, and all that there are.
FocusScope {
    id: sidebar

    // The keyboard is to go on in the conversation.
    signal finished

    function focusSearch() {
        search.forceActiveFocus(Qt.ShortcutFocusReason)
        search.selectAll()
    }

    Accessible.name: qsTr("Conversations")
    Accessible.role: Accessible.Pane

    Rectangle {
        anchors.fill: parent
        color: Theme.sidebar
    }
    PlainField {
        id: search

        anchors.left: parent.left
        anchors.margins: Theme.px(12)
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.topMargin: Theme.gap
        iconName: "search"
        placeholderText: qsTr("Search conversations")
        text: AppModel.sessionQuery
        Keys.onDownPressed: list.forceActiveFocus(Qt.TabFocusReason)
        Keys.onEscapePressed: {
            clear()
            sidebar.finished()
        }
        Keys.onEnterPressed: openFirst()
        Keys.onReturnPressed: openFirst()
        onTextEdited: AppModel.sessionQuery = text
        onTextChanged: AppModel.sessionQuery = text

        function openFirst() {
            ConversationListModel.openFirstHit()
            sidebar.finished()
        }
    }
    PlainButton {
        id: create

        anchors.left: parent.left
        anchors.margins: Theme.px(12)
        anchors.right: parent.right
        anchors.top: search.bottom
        anchors.topMargin: Theme.gap
        iconName: "plus"
        text: qsTr("New conversation")
        onClicked: {
            AppModel.newConversation()
            sidebar.finished()
        }
    }
    ConversationList {
        id: list

        anchors.bottom: parent.bottom
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: create.bottom
        anchors.topMargin: Theme.unit
        onFinished: sidebar.finished()
    }
    PlainText {
        anchors.horizontalCenter: parent.horizontalCenter
        anchors.top: list.top
        anchors.topMargin: Theme.turn
        color: Theme.secondary
        text: qsTr("No conversation holds these words")
        visible: ConversationListModel.searching && ConversationListModel.count === 0
    }
    Rectangle {
        anchors.bottom: parent.bottom
        anchors.right: parent.right
        anchors.top: parent.top
        color: Theme.hairline
        width: 1
    }
}
