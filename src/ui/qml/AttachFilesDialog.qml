import QtQuick
import QtQuick.Dialogs
import Varnel

// Asks for files to attach as soon as it is there.
Item {
    FileDialog {
        fileMode: FileDialog.OpenFiles
        title: qsTr("Attach files")
        Component.onCompleted: {
            currentFolder = Intake.homeFolder
            open()
        }
        onAccepted: Intake.takeFiles(selectedFiles, "", true)
    }
}
