import QtQuick
import Varnel

// One line about what just happened; never a dialog.
Item {
    implicitHeight: Theme.statusLine

    PlainText {
        Accessible.role: Accessible.StatusBar
        anchors.fill: parent
        anchors.leftMargin: Theme.gutter
        anchors.rightMargin: Theme.gutter
        color: Theme.secondary
        font: Theme.metadataFont
        line: Theme.metadataLine
        text: ComposerState.statusLine

        HoverHandler {
            id: hover
        }
        PlainToolTip {
            text: ComposerState.statusLine
            visible: hover.hovered && (parent as PlainText).truncated
        }
    }
}
