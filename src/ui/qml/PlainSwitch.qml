import QtQuick
import QtQuick.Templates as T
import Varnel

// Something that is on or off, with a line about what that means.
T.Switch {
    id: control

    property string detail: ""

    Accessible.checkable: true
    Accessible.checked: checked
    Accessible.description: detail
    Accessible.name: text
    Accessible.role: Accessible.CheckBox
    Accessible.onPressAction: if (enabled)
        toggleByKey()
    Accessible.onToggleAction: if (enabled)
        toggleByKey()
    focusPolicy: Qt.StrongFocus
    font: Theme.uiFont
    implicitHeight: Math.max(Theme.control, words.height + Theme.gap)
    implicitWidth: Theme.px(240)
    Keys.onEnterPressed: control.toggleByKey()
    Keys.onReturnPressed: control.toggleByKey()

    function toggleByKey() {
        control.toggle()
        control.toggled()
    }

    background: Item {
        FocusRing {
            shown: control.visualFocus
        }
    }
    indicator: Rectangle {
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        border.color: control.checked ? Theme.accent : Theme.controlBorder
        border.width: 1
        color: control.checked ? Theme.accent : "transparent"
        height: Theme.px(20)
        radius: height / 2
        width: Theme.px(36)

        Rectangle {
            readonly property int edge: Theme.px(4)

            color: control.checked ? Theme.inkOnAccent : Theme.secondary
            height: Theme.px(12)
            radius: height / 2
            width: height
            x: control.checked !== control.mirrored ? parent.width - width - edge : edge
            y: edge
        }
    }
    Column {
        id: words

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.rightMargin: Theme.px(36) + Theme.gutter
        anchors.verticalCenter: parent.verticalCenter

        PlainText {
            Accessible.ignored: true
            opacity: control.enabled ? 1 : 0.5
            text: control.text
            width: parent.width
        }
        PlainText {
            Accessible.ignored: true
            color: Theme.secondary
            font: Theme.metadataFont
            line: Theme.metadataLine
            text: control.detail
            visible: text.length > 0
            width: parent.width
            wrapMode: Text.Wrap
        }
    }
}
