import QtQuick
import Varnel

// What is worth knowing before the prompt is sent.
Item {
    height: Math.max(mark.height, label.height) + Theme.unit

    Icon {
        id: mark

        anchors.left: parent.left
        anchors.leftMargin: Theme.gutter
        color: Theme.warning
        height: Theme.px(18)
        name: "warning"
        width: Theme.px(18)
    }
    PlainText {
        id: label

        Accessible.role: Accessible.AlertMessage
        anchors.left: mark.right
        anchors.leftMargin: Theme.gap
        anchors.right: parent.right
        anchors.rightMargin: Theme.gutter
        color: Theme.warning
        font: Theme.metadataFont
        line: Theme.metadataLine
        maximumLineCount: 3
        text: ComposerState.notice
        wrapMode: Text.Wrap
    }
}
