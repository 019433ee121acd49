import QtQuick
import Varnel

// What else can be done with a message.
PlainMenu {
    id: menu

    property string identifier: ""
    // Where the button is that opens it.
    property rect place: Qt.rect(0, 0, 0, 0)

    function openFor(id: string, view: Item) {
        identifier = id
        popup(view, place.x, place.y + place.height + Theme.unit)
    }

    Connections {
        function onSelectionChanged() {
            menu.close()
        }

        target: AppModel
    }
    PlainMenuItem {
        text: qsTr("Fork to a new conversation")
        onTriggered: TranscriptFeed.fork(menu.identifier)
    }
    PlainMenuItem {
        text: qsTr("Copy as Markdown")
        onTriggered: TranscriptFeed.copyMessage(menu.identifier)
    }
    PlainMenuItem {
        text: qsTr("Save to a file…")
        onTriggered: ExportFlow.saveMessage(menu.identifier)
    }
}
