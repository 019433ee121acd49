import QtQuick
import Varnel

// Edits the title of the conversation that is shown, in its place. Leaving the field or the conversation keeps what
// was typed, Escape does not.
PlainField {
    id: field

    property var session

    signal ended

    function start() {
        session = AppModel.selectionId()
        text = AppModel.selectedTitle
        visible = true
        forceActiveFocus(Qt.OtherFocusReason)
        selectAll()
    }
    function end(keep: bool) {
        if (!visible)
            return
        visible = false
        if (keep)
            AppModel.rename(session, text)
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
        function onSelectionChanged() {
            field.end(true)
        }

        target: AppModel
    }
}
