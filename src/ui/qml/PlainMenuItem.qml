import QtQuick
import QtQuick.Templates as T
import Varnel

// An entry of a menu: a mark for what is chosen, the label, the keys that do the same.
T.MenuItem {
    id: entry

    // As in "Ctrl+Shift+C"; shown as the system writes them.
    property string keys: ""

    Accessible.checkable: checked
    Accessible.checked: checked
    Accessible.name: text
    Accessible.onPressAction: if (enabled)
        clicked()
    font: Theme.uiFont
    implicitHeight: Theme.control
    implicitWidth: ListView.view ? ListView.view.width : Theme.px(224)
    leftPadding: Theme.gap
    rightPadding: Theme.paragraph

    background: Rectangle {
        color: entry.highlighted || entry.down ? Theme.pressed : "transparent"
        radius: Theme.radius
    }
    Item {
        anchors.fill: parent
        anchors.leftMargin: entry.leftPadding
        anchors.rightMargin: entry.rightPadding

        Icon {
            id: mark

            anchors.left: parent.left
            anchors.verticalCenter: parent.verticalCenter
            color: Theme.accent
            height: Theme.px(18)
            name: "check"
            visible: entry.checked
            width: Theme.px(18)
        }
        PlainText {
            Accessible.ignored: true
            anchors.left: parent.left
            anchors.leftMargin: Theme.px(26)
            anchors.right: shortcutLabel.left
            anchors.rightMargin: Theme.gap
            anchors.verticalCenter: parent.verticalCenter
            color: entry.enabled ? Theme.text : Theme.secondary
            text: entry.text
        }
        PlainText {
            id: shortcutLabel

            Accessible.ignored: true
            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            color: Theme.secondary
            font: Theme.metadataFont
            text: Appearance.nativeKeys(entry.keys)
        }
    }
    indicator: Item {
    }
}
