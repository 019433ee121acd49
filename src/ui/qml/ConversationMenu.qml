import QtQuick
import Varnel

// What can be done with a conversation of the list.
PlainMenu {
    id: menu

    property int row: -1
    property bool pinned: false

    signal renameAsked(row: int)

    function openAt(index: int, entry: ConversationDelegate) {
        row = index
        pinned = entry.pinned
        popup(entry, Theme.gutter, entry.height - Theme.gap)
    }

    PlainMenuItem {
        keys: "F2"
        text: qsTr("Rename")
        onTriggered: menu.renameAsked(menu.row)
    }
    PlainMenuItem {
        text: menu.pinned ? qsTr("Unpin") : qsTr("Pin")
        onTriggered: ConversationListModel.togglePinned(menu.row)
    }
    PlainMenuItem {
        keys: qsTr("Del")
        text: qsTr("Delete")
        onTriggered: ConversationListModel.remove(menu.row)
    }
}
