import QtQuick
import Varnel

// From where something is attached to the message.
PlainMenu {
    id: menu

    signal filesAsked
    signal libraryAsked
    signal pageAsked

    PlainMenuItem {
        text: qsTr("Files…")
        onTriggered: if (Intake.mayAttach())
            menu.filesAsked()
    }
    PlainMenuItem {
        keys: "Ctrl+L"
        text: qsTr("From the library…")
        onTriggered: menu.libraryAsked()
    }
    PlainMenuItem {
        keys: "Ctrl+V"
        text: qsTr("Paste")
        onTriggered: Intake.pasteAnything()
    }
    PlainMenuItem {
        text: qsTr("Read a web page…")
        onTriggered: if (Intake.mayAttach())
            menu.pageAsked()
    }
}
