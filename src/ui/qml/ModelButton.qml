import QtQuick
import QtQuick.Templates as T
import Varnel

// Names the model that answers, and opens the choice.
T.AbstractButton {
    id: button

    required property bool opened
    required property real maximumWidth

    Accessible.description: qsTr("Choose the model that answers")
    Accessible.name: qsTr("Send with %1").arg(AppModel.selectedModel)
    Accessible.role: Accessible.ButtonMenu
    focusPolicy: Qt.StrongFocus
    height: Theme.control
    width: Math.min(row.implicitWidth + Theme.gap + Theme.unit, maximumWidth)
    Keys.onDownPressed: clicked()
    Keys.onEnterPressed: clicked()
    Keys.onReturnPressed: clicked()

    background: Rectangle {
        color: button.down || button.opened ? Theme.pressed : button.hovered ? Theme.hover : "transparent"
        radius: Theme.radius

        FocusRing {
            shown: button.visualFocus
        }
    }
    Item {
        anchors.fill: parent

        Row {
            id: row

            anchors.verticalCenter: parent.verticalCenter
            leftPadding: Theme.gap
            spacing: Theme.unit

            PlainText {
                id: prefix

                anchors.verticalCenter: parent.verticalCenter
                color: Theme.secondary
                text: qsTr("Send with")
            }
            PlainText {
                anchors.verticalCenter: parent.verticalCenter
                text: AppModel.selectedModel
                width: Math.min(implicitWidth, Math.max(0, button.maximumWidth - prefix.width - Theme.px(52)))
            }
            Icon {
                anchors.verticalCenter: parent.verticalCenter
                color: Theme.secondary
                height: Theme.icon
                name: "chevron"
                width: Theme.icon
            }
        }
    }
}
