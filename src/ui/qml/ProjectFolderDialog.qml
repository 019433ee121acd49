import QtQuick
import QtQuick.Dialogs
import Varnel

// Asks for the project folder of the conversation as soon as it is there.
Item {
    FolderDialog {
        property var session

        title: qsTr("Project folder")
        Component.onCompleted: {
            session = AppModel.selectionId()
            currentFolder = Intake.homeFolder
            open()
        }
        onAccepted: ConversationSettings.chooseProject(selectedFolder, session)
    }
}
