import QtQuick
import Varnel

// Where a conversation is saved to and read from. What such dialogs need is large, and most starts do without.
Item {
    function importConversation() {
        importer.active = false
        importer.active = true
    }

    Loader {
        id: exporter

        active: false
        source: "ExportDialog.qml"
    }
    Loader {
        id: importer

        active: false
        source: "ImportDialog.qml"
    }
    Connections {
        function onFileWanted() {
            exporter.active = false
            exporter.active = true
        }

        target: ExportFlow
    }
}
