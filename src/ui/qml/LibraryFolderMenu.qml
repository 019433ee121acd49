import QtQuick
import Varnel

// The folders of the library, and a first entry for none of them.
PlainMenu {
    id: menu

    required property string allText
    required property string chosen

    signal picked(name: string)

    PlainMenuItem {
        checked: menu.chosen.length === 0
        text: menu.allText
        onTriggered: menu.picked("")
    }
    Instantiator {
        delegate: PlainMenuItem {
            required property string modelData

            checked: menu.chosen === modelData
            text: modelData.slice(0, 100)
            onTriggered: menu.picked(modelData)
        }
        model: LibraryListModel.folders
        onObjectAdded: (index, object) => menu.insertItem(index + 1, object as PlainMenuItem)
        onObjectRemoved: (index, object) => menu.removeItem(object as PlainMenuItem)
    }
}
