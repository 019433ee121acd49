import QtQuick
import Varnel

// What the keyboard does wherever it is, unless a sheet lies over the window. ShortcutSheet tells about it.
Item {
    id: shortcuts

    required property ConversationPane pane
    required property Sidebar sidebar

    signal modelsAsked
    signal settingsAsked
    signal libraryAsked

    Shortcut {
        sequence: "Ctrl+N"
        onActivated: {
            AppModel.newConversation()
            shortcuts.pane.focusComposer()
        }
    }
    Shortcut {
        sequence: "Ctrl+K"
        onActivated: {
            WindowLayout.sidebarShown = true
            shortcuts.sidebar.focusSearch()
        }
    }
    Shortcut {
        sequence: "Ctrl+F"
        onActivated: shortcuts.pane.openFind()
    }
    Shortcut {
        sequence: "Ctrl+B"
        onActivated: {
            WindowLayout.sidebarShown = !WindowLayout.sidebarShown
            if (!WindowLayout.sidebarShown)
                shortcuts.pane.focusComposer()
        }
    }
    Shortcut {
        sequence: "Ctrl+PgUp"
        onActivated: ConversationListModel.step(-1)
    }
    Shortcut {
        sequence: "Ctrl+PgDown"
        onActivated: ConversationListModel.step(1)
    }
    Shortcut {
        sequence: "Ctrl+Shift+C"
        onActivated: shortcuts.pane.copyLastReply()
    }
    Shortcut {
        sequence: "Ctrl+Shift+M"
        onActivated: shortcuts.pane.openModelPicker()
    }
    Shortcut {
        sequence: "Ctrl+M"
        onActivated: shortcuts.modelsAsked()
    }
    Shortcut {
        sequence: "Ctrl+,"
        onActivated: shortcuts.settingsAsked()
    }
    Shortcut {
        sequence: "Ctrl+L"
        onActivated: shortcuts.libraryAsked()
    }
    Shortcut {
        sequence: "F2"
        onActivated: shortcuts.pane.renameConversation()
    }
}
