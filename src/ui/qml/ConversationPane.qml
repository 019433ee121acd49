import QtQuick
import Varnel

// The conversation that is shown: its header, what was said, and where the next prompt is written.
FocusScope {
    id: pane

    signal modelsAsked
    signal settingsAsked
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
    function openFind() {
        if (!AppModel.selectedIsEmpty)
            header.findBar.open()
    }
    // Whether there was one to close.
    function closeFind(): bool {
        return header.findBar.close()
    }
    function copyLastReply() {
        TranscriptFeed.copyLastReply()
    }

    ConversationHeader {
        id: header

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        transcript: area.transcript
        onFindAsked: pane.openFind()
        onFindEnded: pane.focusComposer()
        onImportAsked: files.importConversation()
        onModelsAsked: pane.modelsAsked()
        onLibraryAsked: pane.libraryAsked()
        onRenameEnded: pane.focusComposer()
        onSettingsAsked: pane.settingsAsked()
        onShortcutsAsked: pane.shortcutsAsked()
    }
    TranscriptArea {
        id: area

        anchors.bottom: status.top
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: header.bottom
        visible: !AppModel.selectedIsEmpty
        onHitShown: header.findBar.show()
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
    FileDialogs {
        id: files
    }
}
