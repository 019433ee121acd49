import QtQuick
import QtQuick.Templates as T
import Varnel

T.ApplicationWindow {
    id: window

    LayoutMirroring.childrenInherit: true
    LayoutMirroring.enabled: Appearance.rightToLeft
    color: Theme.background
    font: Theme.uiFont
    height: 760
    minimumHeight: 560
    minimumWidth: 920
    title: AppModel.selectedTitle
    width: 1120
    // What stands in a field counts when the field is left, and the program may end in the middle of it.
    onClosing: stage.forceActiveFocus(Qt.OtherFocusReason)

    // Held by the window itself and not by something in it, these work while a sheet lies over the rest as well.
    readonly property list<QtObject> everywhere: [
        Shortcut {
            sequences: ["Ctrl++", "Ctrl+="]
            onActivated: Appearance.zoomIn()
        },
        Shortcut {
            sequence: "Ctrl+-"
            onActivated: Appearance.zoomOut()
        },
        Shortcut {
            sequence: "Ctrl+0"
            onActivated: Appearance.resetZoom()
        },
        Shortcut {
            sequence: "Ctrl+/"
            onActivated: shortcutSheet.open()
        },
        Shortcut {
            sequence: "Ctrl+Q"
            onActivated: Qt.quit()
        }
    ]

    Item {
        id: stage

        anchors.fill: parent
        // What nothing else took: popups and the search come first.
        Keys.onEscapePressed: {
            if (pane.closeFind())
                return
            if (AppModel.isBusy)
                AppModel.stop()
            else
                AppModel.stopReadingPage()
        }

        Sidebar {
            id: sidebar

            anchors.bottom: parent.bottom
            anchors.left: parent.left
            anchors.top: parent.top
            visible: WindowLayout.sidebarShown
            width: visible ? Math.min(Theme.px(WindowLayout.sidebarWidth), Math.round(0.4 * window.width)) : 0
            onFinished: pane.focusComposer()
        }
        ConversationPane {
            id: pane

            anchors.bottom: parent.bottom
            anchors.left: sidebar.right
            anchors.right: parent.right
            anchors.top: parent.top
            onModelsAsked: models.openSheet()
            onSettingsAsked: settings.openSheet()
            onLibraryAsked: librarySheet.open()
            onShortcutsAsked: shortcutSheet.open()
        }
        SidebarHandle {
            anchors.bottom: parent.bottom
            anchors.horizontalCenter: sidebar.right
            anchors.top: parent.top
            visible: sidebar.visible
        }
    }
    DropOverlay {
        anchors.fill: parent
        onTaken: pane.focusComposer()
    }
    UndoBar {
        anchors.bottom: parent.bottom
        anchors.bottomMargin: Theme.gutter
        anchors.left: parent.left
        anchors.leftMargin: Theme.gutter
    }
    SheetLoader {
        id: firstRun

        sourceComponent: FirstRunSheet {
        }
    }
    SheetLoader {
        id: models

        sourceComponent: ModelsSheet {
        }
    }
    SheetLoader {
        id: settings

        sourceComponent: SettingsSheet {
        }
    }
    LibrarySheet {
        id: librarySheet

        onClosed: pane.focusComposer()
    }
    ProjectPreviewSheet {
    }
    ShortcutSheet {
        id: shortcutSheet
    }
    Connections {
        function onModelsAsked() {
            models.openSheet()
        }

        target: firstRun.item as FirstRunSheet
    }
    Connections {
        function onFirstRunAsked() {
            firstRun.openSheet()
        }
        function onModelsAsked() {
            models.openSheet()
        }

        target: settings.item as SettingsSheet
    }
    Shortcuts {
        pane: pane
        sidebar: sidebar
        onModelsAsked: models.openSheet()
        onSettingsAsked: settings.openSheet()
        onLibraryAsked: librarySheet.open()
    }
    Component.onCompleted: {
        pane.focusComposer()
        if (PreferenceEditor.firstRunDue)
            firstRun.openSheet()
    }
}
