import QtQuick
import Varnel

// The folder that the files of the conversation belong to.
PlainMenu {
    id: menu

    readonly property bool chosen: ConversationSettings.projectPath.length > 0

    signal folderAsked

    implicitWidth: Theme.px(320)

    MenuHeading {
        quiet: true
        text: menu.chosen ? ConversationSettings.projectPath
                          : qsTr("With a folder, the model is told to give files that you can write there.")
    }
    PlainMenuItem {
        text: menu.chosen ? qsTr("Choose another folder…") : qsTr("Choose a folder…")
        onTriggered: menu.folderAsked()
    }
    PlainMenuItem {
        enabled: menu.chosen
        text: qsTr("Clear")
        onTriggered: ConversationSettings.clearProject()
    }
}
