import QtQuick
import QtQuick.Dialogs
import Varnel

// Asks for an ssh private key as soon as it is there.
Item {
    FileDialog {
        fileMode: FileDialog.OpenFile
        title: qsTr("Identity file")
        Component.onCompleted: {
            currentFolder = Intake.homeFolder
            open()
        }
        onAccepted: ConnectionEditor.chooseIdentityFile(selectedFile)
    }
}
