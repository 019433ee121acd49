import QtQuick
import Varnel

// With which settings the conversation is held: search, project folder, sampling and kind of work.
Row {
    id: choices

    // Drawings alone, where there is little room.
    required property bool brief

    signal used

    PlainButton {
        id: search

        readonly property bool on: ConversationSettings.searchLabel.length > 0

        Accessible.name: on ? qsTr("Search with %1, on").arg(ConversationSettings.searchLabel) : qsTr("Search")
        Accessible.role: Accessible.ButtonMenu
        hint: qsTr("Let the model look up current public information")
        iconName: "globe"
        ink: on ? Theme.accent : Theme.text
        marked: on
        text: choices.brief ? "" : on ? ConversationSettings.searchLabel : qsTr("Search")
        onClicked: searchMenu.popup(search, 0, -searchMenu.height - Theme.unit)

        SearchMenu {
            id: searchMenu

            onClosed: choices.used()
        }
    }
    PlainButton {
        id: project

        readonly property bool on: ConversationSettings.projectName.length > 0

        Accessible.name: on ? qsTr("Project %1, on").arg(ConversationSettings.projectName) : qsTr("Project")
        Accessible.role: Accessible.ButtonMenu
        hint: on ? ConversationSettings.projectPath : qsTr("Choose a folder for the files of this conversation")
        iconName: "folder"
        ink: on ? Theme.accent : Theme.text
        marked: on
        text: choices.brief ? "" : !on ? qsTr("Project") : ConversationSettings.projectName.length > 14
                                         ? ConversationSettings.projectName.slice(0, 13) + "…"
                                         : ConversationSettings.projectName
        onClicked: projectMenu.popup(project, 0, -projectMenu.height - Theme.unit)

        ProjectMenu {
            id: projectMenu

            onClosed: choices.used()
            onFolderAsked: folderDialog.ask()
        }
        DialogLoader {
            id: folderDialog

            dialog: "ProjectFolderDialog.qml"
        }
    }
    PlainButton {
        id: sampling

        Accessible.role: Accessible.ButtonMenu
        hint: qsTr("Sampling: temperature, context length, keep-alive, system prompt")
        Accessible.name: panel.isUsual ? qsTr("Sampling") : qsTr("Sampling, changed")
        iconName: "sliders"
        ink: panel.isUsual ? Theme.text : Theme.accent
        marked: !panel.isUsual
        onClicked: panel.open()

        SamplingPanel {
            id: panel

            onClosed: choices.used()
        }
    }
    PlainButton {
        id: work

        Accessible.name: ConversationSettings.workLabel.length > 0 ? qsTr("Work: %1").arg(ConversationSettings.workLabel)
                                                                   : qsTr("Work")
        Accessible.role: Accessible.ButtonMenu
        hint: qsTr("Choose the model by the kind of work")
        iconName: "coding"
        text: choices.brief ? "" : ConversationSettings.workLabel.length > 0 ? ConversationSettings.workLabel : qsTr("Work")
        visible: AppModel.contextButtonEnabled
        onClicked: workMenu.popup(work, 0, -workMenu.height - Theme.unit)

        WorkMenu {
            id: workMenu

            onClosed: choices.used()
        }
    }
}
