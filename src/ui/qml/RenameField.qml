import QtQuick
import Varnel

// Edits a title in its place. Leaving the field keeps what was typed, Escape does not.
PlainField {
    id: field

    signal renamed(title: string)
    signal ended

    function start(title: string) {
        text = title
        visible = true
        forceActiveFocus(Qt.OtherFocusReason)
        selectAll()
    }
    function end(keep: bool) {
        if (!visible)
            return
        visible = false
        if (keep)
            renamed(text)
        ended()
    }

    maximumLength: 200
    placeholderText: qsTr("Title of the conversation")
    visible: false
    Keys.onEscapePressed: end(false)
    onAccepted: end(true)
    onActiveFocusChanged: if (!activeFocus)
        end(true)
}
