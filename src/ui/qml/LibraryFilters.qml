import QtQuick
import Varnel

// What of the library is shown, and how more comes into it.
Column {
    id: filters

    required property LibraryList list
    readonly property alias searchField: search
    readonly property list<string> kindNames: [qsTr("All kinds"), qsTr("Files"), qsTr("PDFs"), qsTr("Images"), qsTr("Links")]

    spacing: Theme.gap

    Item {
        height: Theme.control
        width: parent.width

        PlainField {
            id: search

            anchors.left: parent.left
            anchors.right: actions.left
            anchors.rightMargin: Theme.gap
            fill: Theme.popup
            iconName: "search"
            placeholderText: qsTr("Search the library")
            Keys.onDownPressed: filters.list.forceActiveFocus(Qt.TabFocusReason)
            onTextChanged: AppModel.libraryQuery = text
        }
        Row {
            id: actions

            anchors.right: parent.right
            spacing: Theme.gap

            PlainButton {
                iconName: "plus"
                outlined: true
                text: qsTr("Import…")
                onClicked: dialog.ask()

                DialogLoader {
                    id: dialog

                    dialog: "ImportFilesDialog.qml"
                }
            }
            PlainButton {
                iconName: "link"
                outlined: true
                text: qsTr("Add link…")
                onClicked: linkPanel.open()

                LinkPanel {
                    id: linkPanel

                    onClosed: filters.list.forceActiveFocus(Qt.OtherFocusReason)
                }
            }
        }
    }
    Flow {
        spacing: Theme.unit
        width: parent.width

        PlainButton {
            id: folder

            Accessible.name: qsTr("Folder: %1").arg(text)
            Accessible.role: Accessible.ButtonMenu
            iconName: "folder"
            text: LibraryListModel.folder.length > 0 ? LibraryListModel.folder.slice(0, 40) : qsTr("All folders")
            onClicked: folderMenu.popup(folder, 0, folder.height)

            LibraryFolderMenu {
                id: folderMenu

                allText: qsTr("All folders")
                chosen: LibraryListModel.folder
                onPicked: name => LibraryListModel.folder = name
            }
        }
        PlainButton {
            id: kind

            Accessible.name: qsTr("Kind: %1").arg(text)
            Accessible.role: Accessible.ButtonMenu
            iconName: "library"
            text: filters.kindNames[LibraryListModel.kind + 1]
            onClicked: kindMenu.popup(kind, 0, kind.height)

            PlainMenu {
                id: kindMenu

                Instantiator {
                    delegate: PlainMenuItem {
                        required property int index
                        required property string modelData

                        checked: LibraryListModel.kind === index - 1
                        text: modelData
                        onTriggered: LibraryListModel.kind = index - 1
                    }
                    model: filters.kindNames
                    onObjectAdded: (index, object) => kindMenu.insertItem(index, object as PlainMenuItem)
                    onObjectRemoved: (index, object) => kindMenu.removeItem(object as PlainMenuItem)
                }
            }
        }
        PlainButton {
            Accessible.checked: LibraryListModel.showsDeleted
            hint: LibraryListModel.showsDeleted ? qsTr("Back to what is there") : qsTr("Show what was deleted")
            iconName: LibraryListModel.showsDeleted ? "check" : ""
            ink: LibraryListModel.showsDeleted ? Theme.accent : Theme.text
            text: qsTr("Deleted")
            onClicked: LibraryListModel.showsDeleted = !LibraryListModel.showsDeleted
        }
    }
}
