import QtQuick
import QtQuick.Dialogs
import Varnel

// Asks for files to attach as soon as it is there.
Item {
    FileDialog {
        property var session

        fileMode: FileDialog.OpenFiles
        title: qsTr("Attach files")
        Component.onCompleted: {
            session = AppModel.selectionId()
            currentFolder = Intake.homeFolder
            open()
        }
        onAccepted: Intake.takeFiles(selectedFiles, "", true, session)
    }
}
