import QtQuick
import Varnel

// The chosen item: its title, folder and note to be changed, and what can be done with it.
Flickable {
    id: details

    // The sheet is to be closed: the work goes on in a conversation.
    signal finished

    function settle() {
        title.text = LibraryListModel.currentTitle
        folder.text = LibraryListModel.currentFolder
        note.text = LibraryListModel.currentNote
    }

    boundsBehavior: Flickable.StopAtBounds
    clip: true
    contentHeight: column.height + Theme.gap
    interactive: contentHeight > height
    Component.onCompleted: settle()

    Connections {
        function onCurrentChanged() {
            details.settle()
        }

        target: LibraryListModel
    }
    Column {
        id: column

        spacing: Theme.gap
        width: parent.width - Theme.unit
        x: Theme.unit
        y: Theme.unit

        PlainField {
            id: title

            enabled: !LibraryListModel.currentDeleted
            fill: Theme.popup
            maximumLength: 300
            placeholderText: qsTr("Title")
            width: parent.width
            onEditingFinished: LibraryListModel.setTitle(text)
        }
        PlainText {
            color: Theme.secondary
            font: Theme.metadataFont
            line: Theme.metadataLine
            text: LibraryListModel.currentDetail
            width: parent.width
        }
        PlainText {
            color: Theme.accent
            font: Theme.metadataFont
            line: Theme.metadataLine
            maximumLineCount: 3
            text: LibraryListModel.currentAddress
            visible: text.length > 0
            width: parent.width
            wrapMode: Text.WrapAnywhere
        }
        Item {
            height: Theme.control
            width: parent.width

            PlainField {
                id: folder

                anchors.left: parent.left
                anchors.right: pick.left
                anchors.rightMargin: Theme.unit
                enabled: !LibraryListModel.currentDeleted
                fill: Theme.popup
                iconName: "folder"
                maximumLength: 100
                placeholderText: qsTr("Folder")
                onEditingFinished: LibraryListModel.moveTo(text)
            }
            PlainButton {
                id: pick

                Accessible.role: Accessible.ButtonMenu
                anchors.right: parent.right
                enabled: !LibraryListModel.currentDeleted
                hint: qsTr("Choose a folder")
                iconName: "chevron"
                onClicked: menu.popup(pick, pick.width - menu.width, pick.height)

                LibraryFolderMenu {
                    id: menu

                    allText: qsTr("Library")
                    chosen: LibraryListModel.currentFolder
                    onPicked: name => LibraryListModel.moveTo(name)
                }
            }
        }
        MultilineField {
            id: note

            height: Theme.px(120)
            label: qsTr("Note")
            readOnly: LibraryListModel.currentDeleted
            width: parent.width
            onEdited: LibraryListModel.setNote(text)
        }
        LibraryActions {
            width: parent.width
            onFinished: details.finished()
        }
    }
}
