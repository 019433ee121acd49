import QtQuick

// Loads a dialog of files when it is asked for: what such dialogs need is large, and most starts do without.
Loader {
    required property string dialog

    // Later, when the menu that asks has given the keyboard back, so that the dialog keeps it.
    function ask() {
        Qt.callLater(load)
    }
    function load() {
        active = false
        source = dialog
        active = true
    }

    active: false
}
