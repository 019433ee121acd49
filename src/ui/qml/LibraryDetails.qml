import QtQuick
import Varnel

// The chosen item: its title, folder and note to be changed, and what can be done with it.
Flickable {
    id: details

    // The sheet is to be closed: the work goes on in a conversation.
    signal finished

    // Whose texts stand in the fields: another item may be chosen before they are left.
    property string identifier: ""
    // The texts as they were put in; what differs from them was typed.
    property string shownTitle: ""
    property string shownFolder: ""
    property string shownNote: ""

    // Stores what was typed.
    function keep() {
        const typed = {}
        if (title.text !== shownTitle)
            typed.title = title.text
        if (folder.text !== shownFolder)
            typed.folder = folder.text
        if (note.text !== shownNote)
            typed.note = note.text
        if (identifier.length > 0 && Object.keys(typed).length > 0)
            LibraryListModel.keepTyped(identifier, typed)
    }
    // Stores it and shows what has become of it.
    function finishEdit() {
        keep()
        show(true)
    }
    function show(all: bool) {
        // A field makes something else of characters that it cannot hold, so what it holds then is asked for.
        if (all || title.text === shownTitle) {
            title.text = LibraryListModel.currentTitle
            shownTitle = title.text
        }
        if (all || folder.text === shownFolder) {
            folder.text = LibraryListModel.currentFolder
            shownFolder = folder.text
        }
        if (all || note.text === shownNote) {
            note.text = LibraryListModel.currentNote
            shownNote = note.text
        }
    }
    function settle() {
        const chosen = LibraryListModel.currentIdentifier
        const other = chosen !== identifier
        if (other) {
            keep()
            identifier = chosen
        }
        show(other)
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
            onEditingFinished: details.finishEdit()
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
                maximumLength: 300
                placeholderText: qsTr("Folder")
                onEditingFinished: details.finishEdit()
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
            onEdited: details.finishEdit()
        }
        LibraryActions {
            width: parent.width
            onFinished: details.finished()
        }
    }
}
