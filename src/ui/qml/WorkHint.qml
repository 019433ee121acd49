import QtQuick
import Varnel

// One kind of work, to be read.
Item {
    id: hint

    // The title alone, where there is little room.
    property bool brief: false
    required property string drawing
    required property string title
    required property string detail

    Accessible.name: qsTr("%1: %2").arg(title).arg(detail)
    Accessible.role: Accessible.StaticText
    height: Theme.px(40)

    Rectangle {
        id: tile

        anchors.left: parent.left
        anchors.verticalCenter: parent.verticalCenter
        color: Theme.bubble
        height: Theme.px(40)
        radius: Theme.px(10)
        width: height

        Icon {
            anchors.centerIn: parent
            color: Theme.accent
            height: Theme.icon
            name: hint.drawing
            width: Theme.icon
        }
    }
    Column {
        anchors.left: tile.right
        anchors.leftMargin: Theme.paragraph
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter

        PlainText {
            Accessible.ignored: true
            font: Theme.uiStrongFont
            text: hint.title
            width: parent.width
        }
        PlainText {
            Accessible.ignored: true
            color: Theme.secondary
            font: Theme.metadataFont
            line: Theme.metadataLine
            text: hint.detail
            visible: !hint.brief
            width: parent.width
        }
    }
}
