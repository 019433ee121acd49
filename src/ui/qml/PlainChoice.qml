import QtQuick
import QtQuick.Templates as T
import Varnel

// One of several possibilities, of which one is taken.
T.RadioButton {
    id: choice

    property string detail: ""

    Accessible.checkable: true
    Accessible.checked: checked
    Accessible.description: detail
    Accessible.name: text
    Accessible.role: Accessible.RadioButton
    Accessible.onPressAction: if (enabled)
        clicked()
    Accessible.onToggleAction: if (enabled)
        clicked()
    focusPolicy: Qt.StrongFocus
    font: Theme.uiFont
    implicitHeight: words.height + 2 * Theme.px(6)
    implicitWidth: Theme.px(240)
    Keys.onEnterPressed: choice.clicked()
    Keys.onReturnPressed: choice.clicked()

    background: Rectangle {
        border.color: choice.checked ? Theme.accent : Theme.controlBorder
        border.width: 1
        color: choice.down ? Theme.pressed : choice.hovered ? Theme.hover : "transparent"
        radius: Theme.radius

        FocusRing {
            shown: choice.visualFocus
        }
    }
    indicator: Rectangle {
        anchors.left: parent.left
        anchors.leftMargin: Theme.paragraph
        anchors.verticalCenter: parent.verticalCenter
        border.color: choice.checked ? Theme.accent : Theme.controlBorder
        border.width: choice.checked ? Theme.px(5) : 1
        color: "transparent"
        height: Theme.px(16)
        radius: height / 2
        width: height
    }
    Column {
        id: words

        anchors.left: parent.left
        anchors.leftMargin: Theme.px(40)
        anchors.right: parent.right
        anchors.rightMargin: Theme.paragraph
        anchors.verticalCenter: parent.verticalCenter

        PlainText {
            Accessible.ignored: true
            text: choice.text
            width: parent.width
        }
        PlainText {
            Accessible.ignored: true
            color: Theme.secondary
            font: Theme.metadataFont
            line: Theme.metadataLine
            text: choice.detail
            visible: text.length > 0
            width: parent.width
            wrapMode: Text.Wrap
        }
    }
}
