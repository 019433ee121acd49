import QtQuick
import Varnel

// What can be done with a conversation of the list.
PlainMenu {
    id: menu

    // The conversation itself: rows move while a reply comes in.
    property string identifier: ""
    property bool pinned: false

    signal renameAsked(row: int)

    function row(): int {
        return ConversationListModel.rowOfIdentifier(identifier)
    }

    function openAt(entry: ConversationDelegate) {
        identifier = entry.identifier
        pinned = entry.pinned
        popup(entry, Theme.gutter, entry.height - Theme.gap)
    }

    PlainMenuItem {
        keys: "F2"
        text: qsTr("Rename")
        onTriggered: menu.renameAsked(menu.row())
    }
    PlainMenuItem {
        text: menu.pinned ? qsTr("Unpin") : qsTr("Pin")
        onTriggered: ConversationListModel.togglePinned(menu.row())
    }
    PlainMenuItem {
        text: qsTr("Duplicate")
        onTriggered: ConversationListModel.duplicate(menu.row())
    }
    PlainMenuSeparator {
    }
    PlainMenuItem {
        text: qsTr("Export as Markdown…")
        onTriggered: ExportFlow.exportConversation(menu.identifier, ExportFlow.Markdown)
    }
    PlainMenuItem {
        text: qsTr("Export as PDF…")
        onTriggered: ExportFlow.exportConversation(menu.identifier, ExportFlow.Pdf)
    }
    PlainMenuItem {
        text: qsTr("Export as JSON…")
        onTriggered: ExportFlow.exportConversation(menu.identifier, ExportFlow.Json)
    }
    PlainMenuSeparator {
    }
    PlainMenuItem {
        keys: "Del"
        text: qsTr("Delete")
        onTriggered: ConversationListModel.remove(menu.row())
    }
}
