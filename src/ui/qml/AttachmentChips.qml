import QtQuick
import Varnel

// What goes along with the message.
Item {
    id: chips

    signal used

    height: Math.min(flow.height, Theme.px(112))

    Connections {
        function onTaken() {
            chips.used()
        }

        target: AttachmentListModel
    }
    Flickable {
        anchors.fill: parent
        anchors.leftMargin: Theme.gap
        anchors.rightMargin: Theme.gap
        boundsBehavior: Flickable.StopAtBounds
        clip: true
        contentHeight: flow.height
        interactive: contentHeight > height

        Flow {
            id: flow

            Accessible.name: qsTr("Attachments")
            Accessible.role: Accessible.List
            bottomPadding: Theme.unit
            leftPadding: Theme.unit
            rightPadding: Theme.unit
            spacing: Theme.gap
            topPadding: Theme.unit
            width: parent.width

            Repeater {
                model: AttachmentListModel
                delegate: AttachmentChip {
                }
            }
        }
    }
}
