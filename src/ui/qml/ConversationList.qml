import QtQuick
import Varnel

ListView {
    id: list

    // The keyboard is to go on in the conversation.
    signal finished

    function renameCurrent() {
        if (!currentItem)
            return
        editor.row = currentItem
        editor.start()
    }
    function openMenu(row: int) {
        const item = itemAtIndex(row) as ConversationDelegate
        if (item)
            menu.openAt(item)
    }

    Accessible.name: qsTr("Conversations")
    Accessible.role: Accessible.List
    activeFocusOnTab: true
    bottomMargin: Theme.px(12)
    boundsBehavior: Flickable.StopAtBounds
    clip: true
    currentIndex: ConversationListModel.currentRow
    highlightMoveDuration: 0
    keyNavigationEnabled: false
    model: ConversationListModel
    pixelAligned: true
    // A key that is held down deletes one conversation, not all below it.
    Keys.onDeletePressed: event => {
        if (!event.isAutoRepeat)
            ConversationListModel.remove(currentIndex)
    }
    Keys.onDownPressed: ConversationListModel.step(1)
    Keys.onEnterPressed: finished()
    Keys.onMenuPressed: openMenu(currentIndex)
    Keys.onReturnPressed: finished()
    Keys.onUpPressed: ConversationListModel.step(-1)
    Keys.onPressed: event => {
        if (event.key === Qt.Key_F2)
            renameCurrent()
        else if (event.key === Qt.Key_F10 && event.modifiers === Qt.ShiftModifier)
            openMenu(currentIndex) // many keyboards have no key for menus
        else if (event.key === Qt.Key_Home)
            ConversationListModel.open(0)
        else if (event.key === Qt.Key_End)
            ConversationListModel.open(count - 1)
        else
            return
        event.accepted = true
    }
    // A list item's own shortcut goes before the window's.
    Keys.onShortcutOverride: event => event.accepted = event.key === Qt.Key_F2

    section.delegate: PlainText {
        required property string section

        Accessible.ignored: true
        color: Theme.secondary
        font: Theme.metadataFont
        height: Theme.px(32)
        leftPadding: Theme.px(22)
        line: Theme.metadataLine
        rightPadding: Theme.px(22)
        text: section
        topPadding: Theme.gap
        width: ListView.view.width
    }
    section.property: "group"
    delegate: ConversationDelegate {
    }

    TapHandler {
        acceptedButtons: Qt.RightButton
        onTapped: eventPoint => list.openMenu(list.indexAt(list.width / 2, eventPoint.position.y + list.contentY))
    }
    TapHandler {
        onDoubleTapped: eventPoint => {
            if (list.indexAt(list.width / 2, eventPoint.position.y + list.contentY) === list.currentIndex)
                list.renameCurrent()
        }
    }
    // One editor for all rows, over the one whose title it is.
    RenameField {
        id: editor

        property Item row
        readonly property Item place: row ? row : list.currentItem

        width: list.width - Theme.gutter
        x: Theme.gap
        y: place ? place.y - list.contentY + (place.height - height) / 2 : 0
        onEnded: list.forceActiveFocus(Qt.OtherFocusReason)
    }
    ConversationMenu {
        id: menu

        onRenameAsked: row => {
            ConversationListModel.open(row)
            list.renameCurrent()
        }
    }
    PlainScrollBar {
        anchors.bottom: parent.bottom
        anchors.right: parent.right
        anchors.top: parent.top
        orientation: Qt.Vertical
        policy: list.contentHeight > list.height ? PlainScrollBar.AsNeeded : PlainScrollBar.AlwaysOff
        position: list.visibleArea.yPosition
        size: list.visibleArea.heightRatio
        onPositionChanged: if (pressed)
            list.contentY = position * list.contentHeight + list.originY
    }
}
