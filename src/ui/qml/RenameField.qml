import QtQuick
import Varnel

// Edits the title of the conversation that is shown, in its place. Leaving the field keeps what was typed, Escape
// does not. Should another conversation come to the front meanwhile, what is typed goes on to the one it is for.
PlainField {
    id: field

    property var session

    signal ended

    function start() {
        end(true)
        session = AppModel.selectionId()
        text = AppModel.selectedTitle
        visible = true
        forceActiveFocus(Qt.OtherFocusReason)
        selectAll()
    }
    function end(keep: bool) {
        if (!visible)
            return
        const hadKeyboard = activeFocus
        visible = false
        if (keep)
            AppModel.rename(session, text)
        // Else it has gone where somebody wanted it.
        if (hadKeyboard)
            ended()
    }

    maximumLength: 200
    placeholderText: qsTr("Title of the conversation")
    visible: false
    Keys.onEscapePressed: end(false)
    onAccepted: end(true)
    onActiveFocusChanged: if (!activeFocus)
        end(true)

    Connections {
        function onAboutToOpen() {
            field.end(true)
        }

        target: ConversationListModel
    }
}
