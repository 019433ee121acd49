import QtQuick
import Varnel

// A line of a comparison.
Rectangle {
    id: entry

    required property int kind
    required property string line
    readonly property bool added: kind === DiffListModel.Added
    readonly property bool removed: kind === DiffListModel.Removed
    readonly property bool leftOut: kind === DiffListModel.Left

    Accessible.name: (added ? qsTr("Added: %1") : removed ? qsTr("Removed: %1") : leftOut ? qsTr("%1 left out") : "%1").arg(line)
    Accessible.role: Accessible.ListItem
    color: added ? Qt.rgba(Theme.accent.r, Theme.accent.g, Theme.accent.b, 0.14)
           : removed ? Qt.rgba(Theme.error.r, Theme.error.g, Theme.error.b, 0.14) : "transparent"
    height: text.height
    width: ListView.view ? ListView.view.width : 0

    PlainText {
        id: sign

        Accessible.ignored: true
        LayoutMirroring.enabled: false
        color: entry.added ? Theme.accent : entry.removed ? Theme.error : Theme.secondary
        font: Theme.codeFont
        height: Theme.px(20)
        horizontalAlignment: Text.AlignHCenter
        line: Theme.px(20)
        text: entry.added ? "+" : entry.removed ? "−" : entry.leftOut ? "⋯" : ""
        width: Theme.px(28)
    }
    PlainText {
        id: text

        Accessible.ignored: true
        LayoutMirroring.enabled: false
        anchors.left: sign.right
        anchors.right: parent.right
        anchors.rightMargin: Theme.paragraph
        color: entry.leftOut ? Theme.secondary : Theme.text
        font: entry.leftOut ? Theme.metadataFont : Theme.codeFont
        line: Theme.px(20)
        text: entry.line
        wrapMode: Text.Wrap
    }
}
