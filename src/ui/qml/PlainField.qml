import QtQuick
import QtQuick.Templates as T
import Varnel

// One line to type into, with an icon in front of it if one is named.
T.TextField {
    id: field

    property string iconName: ""
    property color fill: Theme.background

    Accessible.name: placeholderText
    Accessible.role: Accessible.EditableText
    // While this is set, Qt keeps the name of a field to itself as well. That its text is hidden is told by the field.
    Accessible.onPasswordEditChanged: if (Accessible.passwordEdit)
        Accessible.passwordEdit = false
    bottomPadding: 0
    color: Theme.text
    font: Theme.uiFont
    implicitHeight: Theme.control
    leftPadding: iconName.length > 0 && !mirrored ? Theme.px(32) : Theme.px(10)
    placeholderTextColor: Theme.secondary
    readonly property bool mirrored: LayoutMirroring.enabled
    rightPadding: iconName.length > 0 && mirrored ? Theme.px(32) : Theme.px(10)
    selectByMouse: true
    selectedTextColor: Theme.text
    selectionColor: Theme.selection
    topPadding: 0
    verticalAlignment: TextInput.AlignVCenter

    background: Rectangle {
        border.color: field.activeFocus ? Theme.accent : Theme.controlBorder
        border.width: field.activeFocus ? Theme.ringWidth : 1
        color: field.fill
        radius: Theme.radius

        Icon {
            anchors.left: parent.left
            anchors.leftMargin: Theme.px(8)
            anchors.verticalCenter: parent.verticalCenter
            color: Theme.secondary
            height: Theme.px(18)
            name: field.iconName
            visible: field.iconName.length > 0
            width: Theme.px(18)
        }
    }

    PlainText {
        anchors.fill: parent
        // Anchors are mirrored by themselves, paddings are not.
        anchors.leftMargin: field.mirrored ? field.rightPadding : field.leftPadding
        anchors.rightMargin: field.mirrored ? field.leftPadding : field.rightPadding
        color: field.placeholderTextColor
        font: field.font
        text: field.placeholderText
        visible: field.length === 0 && field.preeditText.length === 0
    }
}
