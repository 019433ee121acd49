import QtQuick

// Loads a dialog of files when it is asked for: what such dialogs need is large, and most starts do without.
Loader {
    id: loader

    required property string dialog

    function ask() {
        later.start()
    }

    active: false

    // When the menu that asks has given the keyboard back, so that the dialog keeps it.
    Timer {
        id: later

        interval: 0
        onTriggered: {
            loader.active = false
            loader.source = loader.dialog
            loader.active = true
        }
    }
}
