import QtQuick
import Varnel

// What belongs to the window rather than to a conversation, and the conversation's own entries.
PlainMenu {
    id: menu

    signal modelsAsked
    signal libraryAsked
    signal renameAsked
    signal findAsked
    signal importAsked
    signal settingsAsked
    signal shortcutsAsked

    implicitWidth: Theme.px(272)

    PlainMenuItem {
        keys: "F2"
        text: qsTr("Rename conversation")
        onTriggered: menu.renameAsked()
    }
    PlainMenuItem {
        keys: "Ctrl+F"
        text: qsTr("Find in the conversation")
        onTriggered: menu.findAsked()
    }
    PlainMenuSeparator {
    }
    PlainMenuItem {
        text: qsTr("Export as Markdown…")
        onTriggered: ExportFlow.exportCurrent(ExportFlow.Markdown)
    }
    PlainMenuItem {
        text: qsTr("Export as PDF…")
        onTriggered: ExportFlow.exportCurrent(ExportFlow.Pdf)
    }
    PlainMenuItem {
        text: qsTr("Export as JSON…")
        onTriggered: ExportFlow.exportCurrent(ExportFlow.Json)
    }
    PlainMenuItem {
        checked: ExportFlow.withThinking
        text: qsTr("Export thinking as well")
        onTriggered: ExportFlow.withThinking = !ExportFlow.withThinking
    }
    PlainMenuItem {
        text: qsTr("Import a conversation…")
        onTriggered: menu.importAsked()
    }
    PlainMenuSeparator {
    }
    PlainMenuItem {
        text: qsTr("Delete conversation")
        onTriggered: ConversationListModel.removeCurrent()
    }
    PlainMenuSeparator {
    }
    PlainMenuItem {
        checked: Appearance.scheme === Appearance.System
        text: qsTr("Colours of the system")
        onTriggered: Appearance.scheme = Appearance.System
    }
    PlainMenuItem {
        checked: Appearance.scheme === Appearance.Light
        text: qsTr("Light")
        onTriggered: Appearance.scheme = Appearance.Light
    }
    PlainMenuItem {
        checked: Appearance.scheme === Appearance.Dark
        text: qsTr("Dark")
        onTriggered: Appearance.scheme = Appearance.Dark
    }
    PlainMenuSeparator {
    }
    PlainMenuItem {
        keys: "Ctrl++"
        text: qsTr("Larger")
        onTriggered: Appearance.zoomIn()
    }
    PlainMenuItem {
        keys: "Ctrl+-"
        text: qsTr("Smaller")
        onTriggered: Appearance.zoomOut()
    }
    PlainMenuItem {
        enabled: Appearance.zoom !== 1
        keys: "Ctrl+0"
        text: qsTr("Normal size (%1 %)").arg(Math.round(Appearance.zoom * 100))
        onTriggered: Appearance.resetZoom()
    }
    PlainMenuItem {
        checked: ComposerState.sendsWithControl
        text: qsTr("Send with %1").arg(Appearance.nativeKeys("Ctrl+Enter"))
        onTriggered: ComposerState.sendsWithControl = !ComposerState.sendsWithControl
    }
    PlainMenuSeparator {
    }
    PlainMenuItem {
        keys: "Ctrl+M"
        text: qsTr("Models…")
        onTriggered: menu.modelsAsked()
    }
    PlainMenuItem {
        keys: "Ctrl+,"
        text: qsTr("Settings…")
        onTriggered: menu.settingsAsked()
    }
    PlainMenuItem {
        keys: "Ctrl+L"
        text: qsTr("Library")
        onTriggered: menu.libraryAsked()
    }
    PlainMenuItem {
        keys: "Ctrl+/"
        text: qsTr("Keyboard shortcuts")
        onTriggered: menu.shortcutsAsked()
    }
    PlainMenuItem {
        keys: "Ctrl+Q"
        text: qsTr("Quit")
        onTriggered: Qt.quit()
    }
}
