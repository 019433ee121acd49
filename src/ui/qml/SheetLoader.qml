import QtQuick
import Varnel

// A sheet that is made when it is first asked for: most starts of the program never see it. Once made it stays,
// with what was typed into it.
Loader {
    id: loader

    active: false

    function openSheet() {
        active = true
        const sheet = item as Sheet
        if (sheet)
            sheet.open()
    }
}
