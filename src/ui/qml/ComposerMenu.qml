import QtQuick
import Varnel

// What can be done with the text of the message; first of all, what a wrong word may have been meant to be.
PlainMenu {
    id: menu

    required property PromptEditor editor
    required property SpellMarks spelling
    readonly property bool wrong: spelling.word.length > 0
    property point place: Qt.point(0, 0)

    // Opens it at a place of the text as soon as it is known what can be offered.
    function ask(position: int, at: point) {
        place = at
        spelling.choose(position)
    }
    function write(word: string) {
        const start = spelling.wordStart
        editor.remove(start, start + spelling.word.length)
        editor.insert(start, word)
    }

    Instantiator {
        delegate: PlainMenuItem {
            required property string modelData

            text: modelData
            onTriggered: menu.write(modelData)
        }
        model: menu.spelling.suggestions
        onObjectAdded: (index, object) => menu.insertItem(index, object as PlainMenuItem)
        onObjectRemoved: (index, object) => menu.removeItem(object as PlainMenuItem)
    }
    PlainMenuItem {
        height: visible ? implicitHeight : 0
        text: qsTr("Add to the dictionary")
        visible: menu.wrong
        onTriggered: menu.spelling.addWord()
    }
    PlainMenuItem {
        height: visible ? implicitHeight : 0
        text: qsTr("Ignore this word")
        visible: menu.wrong
        onTriggered: menu.spelling.ignoreWord()
    }
    PlainMenuSeparator {
        height: visible ? implicitHeight : 0
        visible: menu.wrong
    }
    PlainMenuItem {
        enabled: menu.editor.selectedText.length > 0
        keys: "Ctrl+X"
        text: qsTr("Cut")
        onTriggered: menu.editor.cut()
    }
    PlainMenuItem {
        enabled: menu.editor.selectedText.length > 0
        keys: "Ctrl+C"
        text: qsTr("Copy")
        onTriggered: menu.editor.copy()
    }
    PlainMenuItem {
        keys: "Ctrl+V"
        text: qsTr("Paste")
        onTriggered: Intake.pasteAnything()
    }
    PlainMenuItem {
        enabled: menu.editor.length > 0
        keys: "Ctrl+A"
        text: qsTr("Select all")
        onTriggered: menu.editor.selectAll()
    }
    Connections {
        function onChosen() {
            menu.popup(menu.editor, menu.place.x, menu.place.y)
        }

        target: menu.spelling
    }
}
