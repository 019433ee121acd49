import QtQuick
import Varnel

// Offers to bring back what an edit or a new answer replaced, or to take a fork away.
Rectangle {
    id: bar

    property bool dismissed: false

    Accessible.name: label.text
    Accessible.role: Accessible.AlertMessage
    border.color: Theme.dark ? Theme.hairline : Theme.controlBorder
    border.width: 1
    color: Theme.popup
    height: Theme.px(40)
    radius: Theme.radius
    visible: AppModel.undoesHere && !AppModel.isBusy && !dismissed
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
            text: AppModel.undoesFork ? qsTr("Forked to a new conversation") : qsTr("The earlier version is kept")
        }
        PlainButton {
            anchors.verticalCenter: parent.verticalCenter
            font: Theme.uiStrongFont
            ink: Theme.accent
            text: AppModel.undoesFork ? qsTr("Undo") : qsTr("Bring back")
            onClicked: AppModel.undoEdit()
        }
        PlainButton {
            anchors.verticalCenter: parent.verticalCenter
            hint: qsTr("Do not show this")
            iconName: "close"
            onClicked: bar.dismissed = true
        }
    }
    Connections {
        function onCanUndoEditChanged() {
            bar.dismissed = false
        }
        function onIsStreamingChanged() {
            bar.dismissed = false
        }

        target: AppModel
    }
}
