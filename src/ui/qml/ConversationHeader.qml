import QtQuick
import Varnel

// The title of the conversation, how its server is doing, and the window's menu.
Item {
    id: header

    signal findAsked
    signal importAsked
    signal modelsAsked
    signal settingsAsked
    signal libraryAsked
    signal shortcutsAsked
    signal renameEnded
    signal findEnded

    // Where the find bar finds.
    required property TranscriptView transcript
    property alias findBar: findBar

    function rename() {
        findBar.close()
        editor.start()
    }

    implicitHeight: Theme.header

    PlainButton {
        id: toggle

        anchors.left: parent.left
        anchors.leftMargin: Theme.gap
        anchors.verticalCenter: parent.verticalCenter
        hint: WindowLayout.sidebarShown ? qsTr("Hide the conversations") : qsTr("Show the conversations")
        iconName: "sidebar"
        onClicked: WindowLayout.sidebarShown = !WindowLayout.sidebarShown
    }
    Item {
        id: titleArea

        anchors.bottom: parent.bottom
        anchors.left: toggle.right
        anchors.leftMargin: Theme.unit
        anchors.right: link.left
        anchors.rightMargin: Theme.gutter
        anchors.top: parent.top
        visible: !findBar.visible

        TitleButton {
            anchors.left: parent.left
            anchors.verticalCenter: parent.verticalCenter
            title: AppModel.selectedTitle
            visible: !editor.visible
            width: Math.min(implicitWidth, parent.width)
            onClicked: header.rename()
        }
        RenameField {
            id: editor

            anchors.left: parent.left
            anchors.verticalCenter: parent.verticalCenter
            width: Math.min(Theme.px(420), parent.width)
            onEnded: header.renameEnded()
        }
    }
    LinkBadge {
        id: link

        anchors.right: more.left
        anchors.rightMargin: Theme.unit
        anchors.verticalCenter: parent.verticalCenter
        visible: !findBar.visible
    }
    FindBar {
        id: findBar

        anchors.bottom: parent.bottom
        anchors.left: toggle.right
        anchors.right: more.left
        anchors.top: parent.top
        transcript: header.transcript
        onClosed: header.findEnded()
    }
    PlainButton {
        id: more

        anchors.right: parent.right
        anchors.rightMargin: Theme.gap
        anchors.verticalCenter: parent.verticalCenter
        hint: qsTr("Menu")
        iconName: "more"
        onClicked: menu.popup(more, more.width - menu.width, more.height + Theme.unit)

        WindowMenu {
            id: menu

            onFindAsked: header.findAsked()
            onImportAsked: header.importAsked()
            onModelsAsked: header.modelsAsked()
            onLibraryAsked: header.libraryAsked()
            onRenameAsked: header.rename()
            onSettingsAsked: header.settingsAsked()
            onShortcutsAsked: header.shortcutsAsked()
        }
    }
    Rectangle {
        anchors.bottom: parent.bottom
        anchors.left: parent.left
        anchors.right: parent.right
        color: Theme.hairline
        height: 1
    }
}
