import QtQuick
import QtQuick.Templates as T
import Varnel

// All that the keyboard does.
T.Popup {
    id: sheet

    // Two columns of keys and what they do.
    readonly property list<ShortcutEntry> entries: [
        ShortcutEntry { keys: "Enter"; label: qsTr("Send") },
        ShortcutEntry { keys: "Shift+Enter"; label: qsTr("New line") },
        ShortcutEntry { keys: "Esc"; label: qsTr("Close, or stop the reply") },
        ShortcutEntry { keys: "Up"; label: qsTr("Edit the last prompt (empty message)") },
        ShortcutEntry { keys: "Ctrl+N"; label: qsTr("New conversation") },
        ShortcutEntry { keys: "Ctrl+K"; label: qsTr("Search conversations") },
        ShortcutEntry { keys: "Ctrl+F"; label: qsTr("Find in the conversation") },
        ShortcutEntry { keys: "Ctrl+PgUp Ctrl+PgDown"; label: qsTr("Previous, next conversation") },
        ShortcutEntry { keys: "F2"; label: qsTr("Rename the conversation") },
        ShortcutEntry { keys: "Ctrl+M"; label: qsTr("Models") },
        ShortcutEntry { keys: "Ctrl+,"; label: qsTr("Settings") },
        ShortcutEntry { keys: "Ctrl+Shift+M"; label: qsTr("Choose the model") },
        ShortcutEntry { keys: "Ctrl+Shift+C"; label: qsTr("Copy the last reply") },
        ShortcutEntry { keys: "Ctrl+L"; label: qsTr("Library") },
        ShortcutEntry { keys: "Ctrl+B"; label: qsTr("Show or hide the conversations") },
        ShortcutEntry { keys: "Ctrl++ Ctrl+- Ctrl+0"; label: qsTr("Larger, smaller, normal size") },
        ShortcutEntry { keys: "Ctrl+/"; label: qsTr("These shortcuts") },
        ShortcutEntry { keys: "Ctrl+Q"; label: qsTr("Quit") }
    ]

    anchors.centerIn: T.Overlay.overlay
    dim: true
    focus: true
    height: Math.min(column.height + 2 * padding, T.Overlay.overlay ? T.Overlay.overlay.height - 2 * Theme.gutter : 0)
    modal: true
    padding: Theme.turn
    width: Math.min(Theme.px(440), T.Overlay.overlay ? T.Overlay.overlay.width - 2 * Theme.gutter : 0)

    T.Overlay.modal: Rectangle {
        color: Qt.rgba(0, 0, 0, Theme.dark ? 0.5 : 0.25)
    }
    background: PopupSurface {
    }
    // A low window shows a part of it.
    Flickable {
        id: view

        anchors.fill: parent
        boundsBehavior: Flickable.StopAtBounds
        clip: true
        contentHeight: column.height
        focus: true
        interactive: contentHeight > height
        Keys.onDownPressed: contentY = Math.max(0, Math.min(contentHeight - height, contentY + Theme.control))
        Keys.onUpPressed: contentY = Math.max(0, contentY - Theme.control)
        T.ScrollBar.vertical: PlainScrollBar {
        }

        Column {
            id: column

            Accessible.name: qsTr("Keyboard shortcuts")
            Accessible.role: Accessible.Dialog
            spacing: Theme.gap
            width: parent.width

            PlainText {
                Accessible.role: Accessible.Heading
                bottomPadding: Theme.gap
                font: Theme.titleFont
                text: qsTr("Keyboard shortcuts")
            }
            Repeater {
                model: sheet.entries

                ShortcutLine {
                }
            }
        }
    }
}
