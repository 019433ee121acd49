import QtQuick
import QtQuick.Templates as T
import Varnel

// The text of the prompt: the draft of the selected conversation, or an earlier prompt that is being edited.
T.TextArea {
    id: editor

    // Whether the text is being put in place by the window rather than by a hand.
    property bool settling: false

    // What can be done at a position of the text is to be offered at a place.
    signal menuAsked(position: int, place: point)

    function settle() {
        settling = true
        text = ComposerState.text
        cursorPosition = ComposerState.cursor()
        settling = false
    }

    Accessible.name: qsTr("Message")
    Accessible.role: Accessible.EditableText
    bottomPadding: Theme.unit
    color: Theme.text
    font: Theme.bodyFont
    implicitHeight: Math.max(Theme.bodyLine, contentHeight) + topPadding + bottomPadding
    leftPadding: Theme.gutter
    placeholderText: qsTr("Write a message")
    // What was sent again is made ready, and then gone from here.
    readOnly: PromptEdit.active && AppModel.isBusy && !AppModel.isStreaming
    rightPadding: Theme.gutter
    selectByMouse: true
    selectedTextColor: Theme.text
    selectionColor: Theme.selection
    textFormat: TextEdit.PlainText
    topPadding: Theme.unit
    wrapMode: TextEdit.Wrap
    Component.onCompleted: settle()
    Keys.onPressed: event => {
        const enter = event.key === Qt.Key_Return || event.key === Qt.Key_Enter
        const sends = ComposerState.sendsWithControl ? (event.modifiers & Qt.ControlModifier) !== 0
                                                     : !(event.modifiers & Qt.ShiftModifier)
        // While an input method composes, Enter takes its suggestion.
        if (enter && !inputMethodComposing && sends)
            ComposerState.send()
        else if (event.matches(StandardKey.Paste) && Intake.paste())
            event.accepted = true
        else if (event.key === Qt.Key_Escape && PromptEdit.active)
            PromptEdit.cancel()
        else if (event.key === Qt.Key_Menu || (event.key === Qt.Key_F10 && event.modifiers === Qt.ShiftModifier))
            menuAsked(cursorPosition, Qt.point(cursorRectangle.x, cursorRectangle.y + cursorRectangle.height))
        else if (event.key === Qt.Key_Up && event.modifiers === Qt.NoModifier && length === 0)
            ComposerState.editLastPrompt()
        else
            return
        event.accepted = true
    }
    // A tab is for going on, not for the text.
    Keys.onBacktabPressed: nextItemInFocusChain(false).forceActiveFocus(Qt.BacktabFocusReason)
    Keys.onTabPressed: nextItemInFocusChain(true).forceActiveFocus(Qt.TabFocusReason)
    onCursorPositionChanged: if (!settling)
        ComposerState.rememberCursor(cursorPosition)
    onTextChanged: if (!settling)
        ComposerState.text = text

    Connections {
        function onTextChanged() {
            if (editor.text !== ComposerState.text)
                editor.settle()
        }

        target: ComposerState
    }
    Connections {
        function onTextDropped(text: string) {
            editor.insert(editor.cursorPosition, text)
        }

        target: Intake
    }
    // The other clipboard of X11 would put a long text in past the rule for long texts.
    MouseArea {
        acceptedButtons: Qt.MiddleButton | Qt.RightButton
        anchors.fill: parent
        cursorShape: Qt.IBeamCursor
        onClicked: mouse => {
            const position = editor.positionAt(mouse.x, mouse.y)
            editor.forceActiveFocus(Qt.MouseFocusReason)
            if (mouse.button === Qt.MiddleButton || position < editor.selectionStart || position > editor.selectionEnd)
                editor.cursorPosition = position
            if (mouse.button === Qt.MiddleButton)
                Intake.pasteSelection()
            else
                editor.menuAsked(position, Qt.point(mouse.x, mouse.y))
        }
    }
    Connections {
        function onSelectionChanged() {
            editor.settle()
        }

        target: AppModel
    }
    PlainText {
        Accessible.ignored: true
        color: Theme.secondary
        font: editor.font
        line: Theme.bodyLine
        text: editor.placeholderText
        visible: editor.length === 0 && editor.preeditText.length === 0
        x: editor.leftPadding
        y: editor.topPadding
    }
}
