import QtQuick
import Varnel

// Which server answers and whether it is there. The mark has a shape of its own for each state.
Row {
    id: badge

    readonly property string stateText: Link.connected ? qsTr("connected") : Link.connecting ? qsTr("checking…") : Link.offline ? qsTr("offline") : qsTr("not checked")

    spacing: Theme.gap

    Item {
        Accessible.name: qsTr("%1, %2").arg(AppModel.hostLabel).arg(badge.stateText)
        Accessible.role: Accessible.StaticText
        anchors.verticalCenter: parent.verticalCenter
        height: Theme.control
        width: mark.width + Theme.px(6) + label.width

        HoverHandler {
            id: hover
        }
        PlainToolTip {
            text: AppModel.connectionDetail.slice(0, 400)
            visible: hover.hovered
            y: parent.height
        }
        Item {
            id: mark

            anchors.left: parent.left
            anchors.verticalCenter: parent.verticalCenter
            height: Theme.gutter
            width: Theme.gutter

            Rectangle {
                anchors.centerIn: parent
                border.color: Theme.secondary
                border.width: Link.connected ? 0 : 1.5
                color: Link.connected ? Theme.accent : "transparent"
                height: width
                radius: width / 2
                visible: !Link.connecting && !Link.offline
                width: Theme.px(9)
            }
            Spinner {
                anchors.fill: parent
                delay: 0 // the link has waited already
                visible: Link.connecting
            }
            Icon {
                anchors.fill: parent
                color: Theme.warning
                name: "warning"
                visible: Link.offline
            }
        }
        PlainText {
            id: label

            Accessible.ignored: true
            anchors.left: mark.right
            anchors.leftMargin: Theme.px(6)
            anchors.verticalCenter: parent.verticalCenter
            color: Link.offline ? Theme.warning : Theme.secondary
            text: Link.connected ? AppModel.hostLabel : qsTr("%1 · %2").arg(AppModel.hostLabel).arg(badge.stateText)
            width: Math.min(implicitWidth, Theme.px(280))
        }
    }
    PlainButton {
        anchors.verticalCenter: parent.verticalCenter
        enabled: !Link.connecting
        hint: Link.connected ? qsTr("Close the connection to the server") : qsTr("Look for the server")
        outlined: !Link.connected
        text: Link.connected ? qsTr("Disconnect") : qsTr("Connect")
        onClicked: {
            if (Link.connected)
                AppModel.closeConnection()
            else
                AppModel.openConnection()
        }
    }
}
