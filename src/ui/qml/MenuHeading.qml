import QtQuick
import QtQuick.Templates as T
import Varnel

// Words in a menu that are read, not chosen.
T.MenuItem {
    id: heading

    property bool quiet: false

    Accessible.name: text
    Accessible.role: Accessible.StaticText
    enabled: false
    implicitHeight: label.implicitHeight + 2 * Theme.px(6)
    implicitWidth: ListView.view ? ListView.view.width : Theme.px(320)

    PlainText {
        id: label

        Accessible.ignored: true
        anchors.left: parent.left
        anchors.leftMargin: Theme.px(34)
        anchors.right: parent.right
        anchors.rightMargin: Theme.paragraph
        anchors.verticalCenter: parent.verticalCenter
        color: heading.quiet ? Theme.secondary : Theme.text
        font: heading.quiet ? Theme.metadataFont : Theme.uiStrongFont
        line: heading.quiet ? Theme.metadataLine : Theme.uiLine
        text: heading.text
        wrapMode: Text.Wrap
    }
    indicator: Item {
    }
}
