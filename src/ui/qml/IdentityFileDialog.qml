import QtQuick.Dialogs
import Varnel

// Chooses an ssh private key.
FileDialog {
    fileMode: FileDialog.OpenFile
    title: qsTr("Identity file")
    onAccepted: ConnectionEditor.chooseIdentityFile(selectedFile)
}
