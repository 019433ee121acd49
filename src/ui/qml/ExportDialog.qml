import QtQuick
import QtQuick.Dialogs
import Varnel

// Asks where to save what is exported, as soon as it is there.
Item {
    FileDialog {
        acceptLabel: qsTr("Save")
        fileMode: FileDialog.SaveFile
        nameFilters: [ExportFlow.filter]
        selectedFile: ExportFlow.suggestedFile
        title: qsTr("Save")
        Component.onCompleted: open()
        onAccepted: ExportFlow.save(selectedFile)
    }
}
