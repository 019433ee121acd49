import QtQuick
import Varnel

// The whole window takes what is dropped, and says so while something is held over it.
DropTarget {
    id: target

    property string hint: qsTr("Drop to attach")

    intake: Intake

    Rectangle {
        Accessible.ignored: !visible
        Accessible.name: target.hint
        Accessible.role: Accessible.Notification
        anchors.fill: parent
        color: Qt.rgba(Theme.background.r, Theme.background.g, Theme.background.b, 0.88)
        visible: target.hovered

        Rectangle {
            anchors.fill: parent
            anchors.margins: Theme.gutter
            border.color: Theme.accent
            border.width: Theme.ringWidth
            color: "transparent"
            radius: Theme.composerRadius
        }
        Column {
            anchors.centerIn: parent
            spacing: Theme.paragraph

            Icon {
                anchors.horizontalCenter: parent.horizontalCenter
                color: Theme.accent
                height: Theme.px(40)
                name: "attach"
                width: Theme.px(40)
            }
            PlainText {
                anchors.horizontalCenter: parent.horizontalCenter
                font: Theme.titleFont
                text: target.hint
            }
        }
    }
}
