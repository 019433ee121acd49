import QtQuick
import Varnel

// The folders of the library, and a first entry for none of them.
PlainMenu {
    id: folderMenu

    required property string allText
    required property string chosen

    signal picked(name: string)

    PlainMenuItem {
        checked: folderMenu.chosen.length === 0
        text: folderMenu.allText
        onTriggered: folderMenu.picked("")
    }
    Instantiator {
        delegate: PlainMenuItem {
            required property string modelData

            checked: (menu as LibraryFolderMenu)?.chosen === modelData
            text: modelData.slice(0, 100)
            onTriggered: (menu as LibraryFolderMenu).picked(modelData)
        }
        model: LibraryListModel.folders
        onObjectAdded: (index, object) => folderMenu.insertItem(index + 1, object as PlainMenuItem)
        onObjectRemoved: (index, object) => folderMenu.removeItem(object as PlainMenuItem)
    }
}
