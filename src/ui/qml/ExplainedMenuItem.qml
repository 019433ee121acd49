import QtQuick
import QtQuick.Templates as T
import Varnel

// An entry of a menu with a line that explains it.
T.MenuItem {
    id: entry

    required property string detail

    Accessible.description: detail
    Accessible.name: text
    Accessible.onPressAction: if (enabled)
        clicked()
    font: Theme.uiFont
    implicitHeight: Theme.px(48)
    implicitWidth: ListView.view ? ListView.view.width : Theme.px(320)

    background: Rectangle {
        color: entry.highlighted || entry.down ? Theme.pressed : "transparent"
        radius: Theme.radius
    }
    Item {
        anchors.fill: parent
        anchors.leftMargin: Theme.gap
        anchors.rightMargin: Theme.paragraph

        Icon {
            id: mark

            anchors.left: parent.left
            anchors.verticalCenter: parent.verticalCenter
            color: Theme.accent
            height: Theme.px(18)
            name: "check"
            visible: entry.checked
            width: Theme.px(18)
        }
        Column {
            anchors.left: parent.left
            anchors.leftMargin: Theme.px(26)
            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter

            PlainText {
                Accessible.ignored: true
                text: entry.text
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
    }
    indicator: Item {
    }
}
