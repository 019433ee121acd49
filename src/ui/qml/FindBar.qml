import QtQuick
import Varnel

// Finds a text in the conversation: what to look for, how often it is there, and the way from one to the next. It
// stands in the header, where it covers nothing of what is read.
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
    visible: false
    Keys.onEscapePressed: close()

    PlainField {
        id: field

        anchors.left: parent.left
        anchors.leftMargin: Theme.gap
        anchors.verticalCenter: parent.verticalCenter
        iconName: "search"
        maximumLength: 500
        placeholderText: qsTr("Find in the conversation")
        text: bar.transcript.findText
        width: Math.min(Theme.px(360), bar.width - count.width - previous.width - next.width - closer.width - Theme.gutter)
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
        anchors.left: field.right
        anchors.leftMargin: Theme.unit
        anchors.verticalCenter: parent.verticalCenter
        color: nothing && !bar.transcript.finding ? Theme.warning : Theme.secondary
        font: Theme.metadataFont
        horizontalAlignment: Text.AlignHCenter
        line: Theme.metadataLine
        text: empty ? "" : !nothing ? qsTr("%L1 of %L2").arg(bar.transcript.findNumber).arg(bar.transcript.findCount)
                                    : bar.transcript.finding ? qsTr("Looking…") : qsTr("Not found")
        width: Math.max(implicitWidth + Theme.gap, Theme.px(72))
    }
    PlainButton {
        id: previous

        anchors.left: count.right
        anchors.verticalCenter: parent.verticalCenter
        enabled: !count.nothing
        hint: qsTr("Previous place (Shift+Enter)")
        iconName: "chevron"
        rotation: 180
        onClicked: bar.transcript.findPrevious()
    }
    PlainButton {
        id: next

        anchors.left: previous.right
        anchors.verticalCenter: parent.verticalCenter
        enabled: !count.nothing
        hint: qsTr("Next place (Enter)")
        iconName: "chevron"
        onClicked: bar.transcript.findNext()
    }
    PlainButton {
        id: closer

        anchors.left: next.right
        anchors.verticalCenter: parent.verticalCenter
        hint: qsTr("Close (Esc)")
        iconName: "close"
        onClicked: bar.close()
    }
    // In an empty conversation there is nothing to find.
    Connections {
        function onSelectionChanged() {
            if (AppModel.selectedIsEmpty)
                bar.close()
        }

        target: AppModel
    }
}
