import QtQuick
import Varnel

// Offers to bring back the conversation that was just deleted.
Rectangle {
    id: bar

    Accessible.name: label.text
    Accessible.role: Accessible.AlertMessage
    color: Theme.text
    height: Theme.px(40)
    radius: Theme.radius
    visible: AppModel.removedTitle.length > 0
    width: row.width + Theme.px(20)

    Row {
        id: row

        anchors.left: parent.left
        anchors.leftMargin: Theme.gutter
        anchors.verticalCenter: parent.verticalCenter
        spacing: Theme.gap

        PlainText {
            id: label

            anchors.verticalCenter: parent.verticalCenter
            color: Theme.background
            text: qsTr("“%1” deleted").arg(AppModel.removedTitle)
            width: Math.min(implicitWidth, Theme.px(280))
        }
        PlainButton {
            anchors.verticalCenter: parent.verticalCenter
            font: Theme.uiStrongFont
            ink: Theme.accentOnInk
            text: qsTr("Undo")
            onClicked: AppModel.undoRemove()
        }
    }
}
