import QtQuick
import Varnel

// What can be done with the text of the message; first of all, what a wrong word may have been meant to be.
PlainMenu {
    id: composerMenu

    required property PromptEditor editor
    required property SpellMarks spelling
    readonly property bool wrong: spelling.word.length > 0
    property point place: Qt.point(0, 0)

    // Opens it at a place of the text as soon as it is known what can be offered.
    function ask(position: int, at: point) {
        place = at
        spelling.choose(position)
    }
    function replaceWord(by: string) {
        const start = spelling.wordStart
        editor.remove(start, start + spelling.word.length)
        editor.insert(start, by)
    }

    Instantiator {
        delegate: PlainMenuItem {
            required property string modelData

            text: modelData
            onTriggered: (menu as ComposerMenu).replaceWord(modelData)
        }
        model: composerMenu.spelling.suggestions
        onObjectAdded: (index, object) => composerMenu.insertItem(index, object as PlainMenuItem)
        onObjectRemoved: (index, object) => composerMenu.removeItem(object as PlainMenuItem)
    }
    PlainMenuItem {
        height: visible ? implicitHeight : 0
        text: qsTr("Add to the dictionary")
        visible: composerMenu.wrong
        onTriggered: composerMenu.spelling.addWord()
    }
    PlainMenuItem {
        height: visible ? implicitHeight : 0
        text: qsTr("Ignore this word")
        visible: composerMenu.wrong
        onTriggered: composerMenu.spelling.ignoreWord()
    }
    PlainMenuSeparator {
        height: visible ? implicitHeight : 0
        visible: composerMenu.wrong
    }
    PlainMenuItem {
        enabled: composerMenu.editor.selectedText.length > 0
        keys: "Ctrl+X"
        text: qsTr("Cut")
        onTriggered: composerMenu.editor.cut()
    }
    PlainMenuItem {
        enabled: composerMenu.editor.selectedText.length > 0
        keys: "Ctrl+C"
        text: qsTr("Copy")
        onTriggered: composerMenu.editor.copy()
    }
    PlainMenuItem {
        keys: "Ctrl+V"
        text: qsTr("Paste")
        onTriggered: if (!Intake.paste())
            composerMenu.editor.paste()
    }
    PlainMenuItem {
        enabled: composerMenu.editor.length > 0
        keys: "Ctrl+A"
        text: qsTr("Select all")
        onTriggered: composerMenu.editor.selectAll()
    }
    Connections {
        function onChosen() {
            composerMenu.popup(composerMenu.editor, composerMenu.place.x, composerMenu.place.y)
        }

        target: composerMenu.spelling
    }
}
