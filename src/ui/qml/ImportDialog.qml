import QtQuick
import QtQuick.Dialogs
import Varnel

// Asks for a conversation to read from a file, as soon as it is there.
Item {
    FileDialog {
        fileMode: FileDialog.OpenFile
        nameFilters: [qsTr("Conversations as JSON") + " (*.json)"]
        title: qsTr("Import a conversation")
        Component.onCompleted: {
            currentFolder = Intake.homeFolder
            open()
        }
        onAccepted: ExportFlow.importConversation(selectedFile)
    }
}
