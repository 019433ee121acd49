import QtQuick
import QtQuick.Templates as T
import Varnel

// A button with a text, an icon or both.
T.Button {
    id: button

    property string iconName: ""
    property bool outlined: false
    // Floats above what scrolls, so that nothing shines through.
    property bool raised: false
    property bool primary: false
    // Has something set that is worth a dot: a colour alone does not tell everybody.
    property bool marked: false
    property string hint: ""
    // Pressed since the pointer came: the hint would only lie over what came of it.
    property bool used: false

    property color ink: !primary ? Theme.text : enabled ? Theme.inkOnAccent : Theme.secondary

    Accessible.description: hint
    Accessible.name: text.length > 0 ? text : hint
    Accessible.role: Accessible.Button
    Accessible.onPressAction: if (enabled)
        clicked()
    focusPolicy: Qt.StrongFocus
    font: Theme.uiFont
    implicitHeight: Theme.control
    implicitWidth: text.length > 0 ? row.implicitWidth + leftPadding + rightPadding : Theme.control
    leftPadding: text.length > 0 ? (iconName.length > 0 ? Theme.gap : Theme.paragraph) : 0
    opacity: enabled || primary ? 1 : 0.45
    rightPadding: text.length > 0 ? Theme.paragraph : 0
    // The key that brought the keyboard here may still be held down.
    Keys.onEnterPressed: event => {
        if (!event.isAutoRepeat)
            clicked()
    }
    Keys.onReturnPressed: event => {
        if (!event.isAutoRepeat)
            clicked()
    }
    onHoveredChanged: used = false
    onPressed: used = true

    background: Rectangle {
        border.color: Theme.controlBorder
        border.width: button.outlined || button.raised ? 1 : 0
        color: button.primary ? (button.enabled ? Theme.accent : Theme.bubble) : button.raised ? Theme.popup : "transparent"
        radius: button.raised ? height / 2 : Theme.radius

        Rectangle {
            anchors.fill: parent
            color: button.down ? Theme.pressed : Theme.hover
            radius: parent.radius
            visible: button.enabled && (button.hovered || button.down)
        }

        FocusRing {
            shown: button.visualFocus
        }
    }
    Row {
        id: row

        anchors.left: parent.left
        anchors.leftMargin: button.text.length > 0 ? button.leftPadding : (button.width - width) / 2
        anchors.verticalCenter: parent.verticalCenter
        spacing: Theme.px(6)

        Icon {
            anchors.verticalCenter: parent.verticalCenter
            color: button.ink
            height: Theme.icon
            name: button.iconName
            visible: button.iconName.length > 0
            width: Theme.icon

            Rectangle {
                anchors.horizontalCenter: parent.right
                anchors.verticalCenter: parent.top
                color: button.ink
                height: width
                radius: width / 2
                visible: button.marked
                width: Theme.px(7)
            }
        }
        PlainText {
            Accessible.ignored: true
            anchors.verticalCenter: parent.verticalCenter
            color: button.ink
            font: button.font
            text: button.text
            visible: button.text.length > 0
        }
    }
    PlainToolTip {
        text: button.hint
        visible: button.hovered && !button.used && button.hint.length > 0
    }
}
