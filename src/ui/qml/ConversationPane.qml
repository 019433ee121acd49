import QtQuick
import Varnel

// The conversation that is shown: its header, what was said, and where the next prompt is written.
FocusScope {
    id: pane

    signal libraryAsked
    signal shortcutsAsked

    function focusComposer() {
        composer.focusText()
    }
    function openModelPicker() {
        composer.openModelPicker()
    }
    function renameConversation() {
        header.rename()
    }
    function copyLastReply() {
        TranscriptFeed.copyLastReply()
    }

    ConversationHeader {
        id: header

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        onLibraryAsked: pane.libraryAsked()
        onRenameEnded: pane.focusComposer()
        onShortcutsAsked: pane.shortcutsAsked()
    }
    TranscriptArea {
        anchors.bottom: status.top
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: header.bottom
        visible: !AppModel.selectedIsEmpty
    }
    Loader {
        active: AppModel.selectedIsEmpty
        anchors.bottom: status.top
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: header.bottom
        sourceComponent: EmptyState {
        }
    }
    StatusLine {
        id: status

        anchors.bottom: composer.top
        anchors.horizontalCenter: parent.horizontalCenter
        width: composer.width
    }
    Composer {
        id: composer

        anchors.bottom: parent.bottom
        anchors.bottomMargin: Theme.gutter
        anchors.horizontalCenter: parent.horizontalCenter
        width: Math.min(Theme.column, parent.width - 2 * Theme.gutter)
        onLibraryAsked: pane.libraryAsked()
    }
}
