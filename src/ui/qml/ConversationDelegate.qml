import QtQuick
import QtQuick.Templates as T
import Varnel

// A conversation in the list: title, one line of what was said last, time, and how it stands.
T.ItemDelegate {
    id: entry

    required property int index
    required property string identifier
    required property string title
    required property string preview
    required property string time
    required property bool pinned
    required property bool streaming
    required property bool unseen
    required property bool current
    required property int hitStart
    required property int hitLength

    readonly property string states: (pinned ? qsTr("Pinned. ") : "") + (streaming ? qsTr("Answering. ") : "")
                                     + (unseen ? qsTr("New reply. ") : "")

    Accessible.description: states + preview
    Accessible.name: qsTr("%1, %2").arg(title).arg(time)
    Accessible.role: Accessible.ListItem
    Accessible.selected: current
    Accessible.onPressAction: if (enabled)
        clicked()
    focusPolicy: Qt.NoFocus
    height: Theme.px(54)
    width: ListView.view.width
    onClicked: ConversationListModel.open(index)

    background: Item {
        Rectangle {
            anchors.fill: parent
            anchors.leftMargin: Theme.px(10)
            anchors.rightMargin: Theme.px(10)
            anchors.topMargin: Theme.px(1)
            anchors.bottomMargin: Theme.px(1)
            color: entry.current ? Theme.chosen : entry.hovered ? Theme.hover : "transparent"
            radius: Theme.radius

            Rectangle {
                anchors.fill: parent
                border.color: Theme.accent
                border.width: Theme.ringWidth
                color: "transparent"
                radius: parent.radius
                visible: entry.ListView.isCurrentItem && entry.ListView.view.activeFocus
            }
        }
    }
    Item {
        anchors.fill: parent

        Row {
            id: marks

            anchors.right: parent.right
            anchors.rightMargin: Theme.px(20)
            anchors.top: parent.top
            anchors.topMargin: Theme.gap
            height: Theme.uiLine
            spacing: Theme.unit

            Icon {
                anchors.verticalCenter: parent.verticalCenter
                color: Theme.secondary
                height: Theme.px(14)
                name: "pin"
                visible: entry.pinned
                width: height
            }
            Spinner {
                anchors.verticalCenter: parent.verticalCenter
                height: Theme.px(14)
                visible: entry.streaming
                width: height
            }
            Rectangle {
                anchors.verticalCenter: parent.verticalCenter
                color: Theme.accent
                height: Theme.px(8)
                radius: height / 2
                visible: entry.unseen
                width: height
            }
            PlainText {
                anchors.verticalCenter: parent.verticalCenter
                color: Theme.secondary
                font: Theme.metadataFont
                line: Theme.metadataLine
                text: entry.time
            }
        }
        PlainText {
            anchors.left: parent.left
            anchors.leftMargin: Theme.px(22)
            anchors.right: marks.left
            anchors.rightMargin: Theme.gap
            anchors.top: marks.top
            font: entry.unseen ? Theme.uiStrongFont : Theme.uiFont
            height: Theme.uiLine
            text: entry.title
        }
        PlainText {
            id: preview

            anchors.bottom: parent.bottom
            anchors.bottomMargin: Theme.px(9)
            anchors.left: parent.left
            anchors.leftMargin: Theme.px(22)
            anchors.right: parent.right
            anchors.rightMargin: Theme.px(20)
            color: Theme.secondary
            font: Theme.metadataFont
            height: Theme.metadataLine
            line: Theme.metadataLine
            text: entry.preview.length > 0 ? entry.preview : qsTr("Nothing said yet")
            visible: entry.hitLength === 0
        }
        MarkedLine {
            anchors.fill: preview
            color: Theme.secondary
            font: Theme.metadataFont
            markColor: Theme.text
            markFill: Theme.selection
            markLength: entry.hitLength
            markStart: entry.hitStart
            mirrored: Appearance.rightToLeft
            text: entry.preview
            visible: entry.hitLength > 0
        }
    }
}
