import QtQuick
import Varnel

// Finds a text in the conversation: what to look for, how often it is there, and the way from one to the next.
FocusScope {
    id: bar

    required property TranscriptView transcript

    signal closed

    function show() {
        visible = true
    }
    function open() {
        show()
        field.forceActiveFocus(Qt.ShortcutFocusReason)
        field.selectAll()
    }
    // Whether it was open.
    function close(): bool {
        if (!visible)
            return false
        visible = false
        transcript.findText = ""
        closed()
        return true
    }

    Accessible.name: qsTr("Find in the conversation")
    Accessible.role: Accessible.Pane
    height: Theme.px(48)
    visible: false
    Keys.onEscapePressed: close()

    PopupSurface {
        anchors.fill: parent
    }
    // What lies below is not reached through it.
    TapHandler {
    }
    HoverHandler {
    }
    PlainField {
        id: field

        anchors.left: parent.left
        anchors.leftMargin: Theme.gap
        anchors.right: count.left
        anchors.rightMargin: Theme.gap
        anchors.verticalCenter: parent.verticalCenter
        iconName: "search"
        maximumLength: 500
        placeholderText: qsTr("Find in the conversation")
        text: bar.transcript.findText
        Keys.onDownPressed: bar.transcript.findNext()
        Keys.onEnterPressed: event => search(event)
        Keys.onReturnPressed: event => search(event)
        Keys.onUpPressed: bar.transcript.findPrevious()
        onTextEdited: bar.transcript.findText = text

        function search(event: KeyEvent) {
            if (event.modifiers & Qt.ShiftModifier)
                bar.transcript.findPrevious()
            else
                bar.transcript.findNext()
        }
    }
    PlainText {
        id: count

        readonly property bool empty: bar.transcript.findText.length === 0
        readonly property bool nothing: bar.transcript.findCount === 0

        Accessible.role: Accessible.StatusBar
        anchors.right: previous.left
        anchors.rightMargin: Theme.unit
        anchors.verticalCenter: parent.verticalCenter
        color: nothing && !bar.transcript.finding ? Theme.warning : Theme.secondary
        font: Theme.metadataFont
        horizontalAlignment: Text.AlignRight
        line: Theme.metadataLine
        text: empty ? "" : !nothing ? qsTr("%L1 of %L2").arg(bar.transcript.findNumber).arg(bar.transcript.findCount)
                                    : bar.transcript.finding ? qsTr("Looking…") : qsTr("Not found")
        width: Math.max(implicitWidth, Theme.px(64))
    }
    PlainButton {
        id: previous

        anchors.right: next.left
        anchors.verticalCenter: parent.verticalCenter
        enabled: !count.nothing
        hint: qsTr("Previous place (Shift+Enter)")
        iconName: "chevron"
        rotation: 180
        onClicked: bar.transcript.findPrevious()
    }
    PlainButton {
        id: next

        anchors.right: closer.left
        anchors.verticalCenter: parent.verticalCenter
        enabled: !count.nothing
        hint: qsTr("Next place (Enter)")
        iconName: "chevron"
        onClicked: bar.transcript.findNext()
    }
    PlainButton {
        id: closer

        anchors.right: parent.right
        anchors.rightMargin: Theme.gap
        anchors.verticalCenter: parent.verticalCenter
        hint: qsTr("Close (Esc)")
        iconName: "close"
        onClicked: bar.close()
    }
}
