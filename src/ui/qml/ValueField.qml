import QtQuick
import Varnel

// A setting that is stored when its field is left.
SettingsField {
    id: setting

    property string typed: ""
    property bool touched: false

    signal stored(text: string)

    onEdited: text => {
        typed = text
        touched = true
    }
    onFinished: {
        if (touched)
            stored(typed)
        touched = false
    }
}
