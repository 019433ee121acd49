import QtQuick

// Loads a dialog of files when it is asked for: what such dialogs need is large, and most starts do without.
Loader {
    required property string dialog

    function ask() {
        active = false
        source = dialog
        active = true
    }

    active: false
}
