import QtQuick
import QtQuick.Templates as T
import Varnel

// An item of the library.
T.ItemDelegate {
    id: entry

    required property int index
    required property string title
    required property string drawing
    required property string detail
    required property bool attached

    Accessible.description: attached ? qsTr("%1, attached").arg(detail) : detail
    Accessible.name: title
    Accessible.role: Accessible.ListItem
    Accessible.selected: ListView.isCurrentItem
    Accessible.onPressAction: if (enabled)
        clicked()
    focusPolicy: Qt.NoFocus
    height: Theme.px(52)
    width: ListView.view.width - Theme.px(12)
    onClicked: LibraryListModel.currentRow = index
    onDoubleClicked: LibraryListModel.toggleAttached()

    background: Rectangle {
        border.color: Theme.accent
        border.width: entry.ListView.isCurrentItem && entry.ListView.view.activeFocus ? Theme.ringWidth : 0
        color: entry.ListView.isCurrentItem ? Theme.chosen : entry.hovered ? Theme.hover : "transparent"
        radius: Theme.radius
    }
    Item {
        anchors.fill: parent
        anchors.leftMargin: Theme.paragraph
        anchors.rightMargin: Theme.paragraph

        Icon {
            id: mark

            anchors.left: parent.left
            anchors.verticalCenter: parent.verticalCenter
            color: Theme.secondary
            height: Theme.icon
            name: entry.drawing
            width: Theme.icon
        }
        Column {
            anchors.left: mark.right
            anchors.leftMargin: Theme.paragraph
            anchors.right: check.left
            anchors.rightMargin: Theme.gap
            anchors.verticalCenter: parent.verticalCenter

            PlainText {
                Accessible.ignored: true
                text: entry.title
                width: parent.width
            }
            PlainText {
                Accessible.ignored: true
                color: Theme.secondary
                font: Theme.metadataFont
                line: Theme.metadataLine
                text: entry.detail
                width: parent.width
            }
        }
        Icon {
            id: check

            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            color: Theme.accent
            height: Theme.px(18)
            name: "attach"
            visible: entry.attached
            width: visible ? Theme.px(18) : 0
        }
    }
}
