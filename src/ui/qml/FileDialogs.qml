import QtQuick
import QtQuick.Dialogs
import Varnel

// Where a conversation is saved to and read from. The dialogs are made when they are first asked for.
Item {
    id: files

    function importConversation() {
        importer.active = true
        const dialog = importer.item as FileDialog
        if (dialog)
            dialog.open()
    }
    function chooseTarget(suggested: url, filter: string) {
        exporter.active = true
        const dialog = exporter.item as FileDialog
        if (!dialog)
            return
        dialog.nameFilters = [filter]
        dialog.selectedFile = suggested
        dialog.open()
    }

    Loader {
        id: exporter

        active: false
        sourceComponent: FileDialog {
            fileMode: FileDialog.SaveFile
            title: qsTr("Save")
            onAccepted: ExportFlow.save(selectedFile)
        }
    }
    Loader {
        id: importer

        active: false
        sourceComponent: FileDialog {
            fileMode: FileDialog.OpenFile
            nameFilters: [qsTr("Conversations as JSON") + " (*.json)"]
            title: qsTr("Import a conversation")
            onAccepted: ExportFlow.importConversation(selectedFile)
        }
    }
    Connections {
        function onFileWanted(suggested: url, filter: string) {
            files.chooseTarget(suggested, filter)
        }

        target: ExportFlow
    }
}
