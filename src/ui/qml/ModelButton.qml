import QtQuick
import QtQuick.Templates as T
import Varnel

// Names the model that answers, and opens the choice.
T.AbstractButton {
    id: button

    required property bool opened
    required property real maximumWidth
    // Whether there is room for more than the name.
    property bool prefixed: true
    readonly property bool cloud: ComposerState.cloudName.length > 0
    readonly property string model: cloud ? qsTr("%1 · %2").arg(ComposerState.cloudName).arg(AppModel.selectedModel) : AppModel.selectedModel

    Accessible.description: cloud ? qsTr("A cloud service answers. Choose the model that answers") : qsTr("Choose the model that answers")
    Accessible.name: qsTr("Send with %1").arg(model)
    Accessible.role: Accessible.ButtonMenu
    Accessible.onPressAction: if (enabled)
        clicked()
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

            Icon {
                id: cloudMark

                anchors.verticalCenter: parent.verticalCenter
                color: Theme.accent
                height: Theme.icon
                name: "cloud"
                visible: button.cloud
                width: Theme.icon
            }
            PlainText {
                id: prefix

                anchors.verticalCenter: parent.verticalCenter
                color: Theme.secondary
                text: qsTr("Send with")
                visible: button.prefixed && !button.cloud
            }
            PlainText {
                anchors.verticalCenter: parent.verticalCenter
                text: button.model
                width: Math.min(implicitWidth, Math.max(0, button.maximumWidth - (prefix.visible ? prefix.width : 0)
                                                        - (cloudMark.visible ? cloudMark.width : 0) - Theme.px(52)))
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
