import QtQuick
import QtQuick.Templates as T
import Varnel

// A model of the picker.
T.ItemDelegate {
    id: entry

    required property int index
    required property string name
    required property string detail
    required property bool current
    required property bool vision
    required property bool cloud

    Accessible.description: vision ? qsTr("%1, reads images").arg(detail) : detail
    Accessible.name: name
    Accessible.role: Accessible.ListItem
    Accessible.selected: current
    Accessible.onPressAction: if (enabled)
        clicked()
    focusPolicy: Qt.NoFocus
    height: Theme.px(36)
    width: ListView.view.width
    onClicked: ModelListModel.choose(index)

    background: Rectangle {
        color: entry.ListView.isCurrentItem ? Theme.chosen : entry.hovered ? Theme.hover : "transparent"
        radius: Theme.radius
    }
    Item {
        anchors.fill: parent

        Icon {
            id: mark

            anchors.left: parent.left
            anchors.leftMargin: Theme.gap
            anchors.verticalCenter: parent.verticalCenter
            color: Theme.accent
            height: Theme.px(18)
            name: "check"
            visible: entry.current
            width: Theme.px(18)
        }
        PlainText {
            Accessible.ignored: true
            anchors.left: mark.right
            anchors.leftMargin: Theme.px(6)
            anchors.right: marks.left
            anchors.rightMargin: Theme.gap
            anchors.verticalCenter: parent.verticalCenter
            text: entry.name
        }
        Row {
            id: marks

            anchors.right: size.left
            anchors.rightMargin: size.text.length > 0 ? Theme.gap : 0
            anchors.verticalCenter: parent.verticalCenter

            Icon {
                color: Theme.secondary
                height: Theme.px(18)
                name: "vision"
                visible: entry.vision
                width: Theme.px(18)
            }
        }
        PlainText {
            id: size

            Accessible.ignored: true
            anchors.right: parent.right
            anchors.rightMargin: Theme.px(20)
            anchors.verticalCenter: parent.verticalCenter
            color: Theme.secondary
            font: Theme.metadataFont
            text: entry.cloud ? qsTr("%1 · cloud").arg(entry.detail) : entry.detail
        }
    }
}
