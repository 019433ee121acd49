import QtQuick
import QtQuick.Templates as T
import Varnel

// A row of a list of models: a name with a mark behind it, and a line about it.
T.ItemDelegate {
    id: row

    required property int index
    required property string name
    property string detail: ""
    property string mark: ""

    Accessible.description: mark.length > 0 && detail.length > 0 ? mark + ", " + detail : mark + detail
    Accessible.name: name
    Accessible.role: Accessible.ListItem
    Accessible.selected: ListView.isCurrentItem
    Accessible.onPressAction: if (enabled)
        clicked()
    focusPolicy: Qt.NoFocus
    height: Theme.px(48)
    width: ListView.view ? ListView.view.width : 0
    onClicked: {
        const list = ListView.view as ChoiceList
        list.forceActiveFocus(Qt.MouseFocusReason)
        if (list.currentIndex === index)
            list.pointed()
        else
            list.currentIndex = index
    }

    background: Rectangle {
        border.color: Theme.accent
        border.width: row.ListView.isCurrentItem && row.ListView.view.activeFocus ? Theme.ringWidth : 0
        color: row.ListView.isCurrentItem ? Theme.chosen : row.hovered ? Theme.hover : "transparent"
        radius: Theme.radius
    }
    Item {
        anchors.fill: parent
        anchors.leftMargin: Theme.paragraph
        anchors.rightMargin: Theme.gutter

        PlainText {
            Accessible.ignored: true
            anchors.left: parent.left
            anchors.right: markText.left
            anchors.rightMargin: Theme.gap
            text: row.name
            y: Theme.px(6)
        }
        PlainText {
            id: markText

            Accessible.ignored: true
            anchors.right: parent.right
            color: Theme.accent
            font: Theme.metadataFont
            text: row.mark
            y: Theme.px(6)
        }
        PlainText {
            Accessible.ignored: true
            anchors.left: parent.left
            anchors.right: parent.right
            color: Theme.secondary
            font: Theme.metadataFont
            line: Theme.metadataLine
            text: row.detail
            y: Theme.px(25)
        }
    }
}
