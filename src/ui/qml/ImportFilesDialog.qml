import QtQuick
import QtQuick.Dialogs
import Varnel

// Asks for files to take into the folder of the library that is shown, as soon as it is there.
Item {
    FileDialog {
        fileMode: FileDialog.OpenFiles
        title: qsTr("Import files")
        Component.onCompleted: {
            currentFolder = Intake.homeFolder
            open()
        }
        onAccepted: Intake.takeFiles(selectedFiles, LibraryListModel.folder, false)
    }
}
