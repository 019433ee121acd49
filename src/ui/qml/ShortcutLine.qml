import QtQuick
import Varnel

// A row of the sheet of shortcuts.
Item {
    id: line

    required property ShortcutEntry modelData

    Accessible.name: qsTr("%1: %2").arg(modelData.text).arg(modelData.label)
    Accessible.role: Accessible.StaticText
    height: Theme.px(22)
    width: parent ? parent.width : 0

    PlainText {
        Accessible.ignored: true
        anchors.left: parent.left
        text: line.modelData.label
    }
    PlainText {
        Accessible.ignored: true
        anchors.right: parent.right
        color: Theme.secondary
        font: Theme.metadataFont
        text: line.modelData.text
    }
}
