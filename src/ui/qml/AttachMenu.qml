import QtQuick
import Varnel

// From where something is attached to the message.
PlainMenu {
    id: menu

    signal filesAsked
    signal libraryAsked
    signal pageAsked
    // The keyboard is to go back to where it was; what was asked for takes it from there.
    signal gone

    property bool wantsLibrary: false
    property bool wantsPage: false

    onAboutToShow: wantsLibrary = wantsPage = false
    onClosed: {
        gone()
        if (wantsLibrary)
            libraryAsked()
        else if (wantsPage)
            pageAsked()
    }

    PlainMenuItem {
        text: qsTr("Files…")
        onTriggered: if (Intake.mayAttach())
            menu.filesAsked()
    }
    PlainMenuItem {
        keys: "Ctrl+L"
        text: qsTr("From the library…")
        onTriggered: menu.wantsLibrary = true
    }
    PlainMenuItem {
        keys: "Ctrl+V"
        text: qsTr("Paste")
        onTriggered: Intake.pasteAnything()
    }
    PlainMenuItem {
        text: qsTr("Read a web page…")
        onTriggered: menu.wantsPage = Intake.mayAttach()
    }
}
