import QtQuick
import Varnel

// An attachment: what it is, and a button that takes it off. Greyed where the model cannot read it.
Rectangle {
    id: chip

    required property int index
    required property string title
    required property string drawing
    required property string reason
    required property bool pasted

    readonly property bool unreadable: reason.length > 0

    Accessible.description: reason
    Accessible.name: title
    Accessible.role: Accessible.ListItem
    border.color: Theme.hairline
    border.width: 1
    color: unreadable ? "transparent" : Theme.bubble
    height: Theme.control
    radius: Theme.radius
    width: Math.min(row.width + Theme.gap, parent ? (parent as Flow).width - 2 * Theme.gap : 0)

    HoverHandler {
        id: hover
    }
    PlainToolTip {
        text: chip.unreadable ? chip.reason : chip.title
        visible: hover.hovered
        width: Math.min(implicitWidth, Theme.px(480))
    }
    Row {
        id: row

        anchors.left: parent.left
        anchors.leftMargin: Theme.gap
        anchors.verticalCenter: parent.verticalCenter
        spacing: Theme.unit

        Icon {
            anchors.verticalCenter: parent.verticalCenter
            color: chip.unreadable ? Theme.warning : Theme.accent
            height: Theme.px(18)
            name: chip.unreadable ? "warning" : chip.drawing
            width: Theme.px(18)
        }
        PlainText {
            Accessible.ignored: true
            anchors.verticalCenter: parent.verticalCenter
            color: chip.unreadable ? Theme.secondary : Theme.text
            text: chip.title
            width: Math.min(implicitWidth, Theme.px(200))
        }
        PlainText {
            Accessible.ignored: true
            anchors.verticalCenter: parent.verticalCenter
            color: Theme.warning
            font: Theme.metadataFont
            text: qsTr("not readable")
            visible: chip.unreadable
        }
        PlainButton {
            text: qsTr("Show in text")
            visible: chip.pasted
            onClicked: AttachmentListModel.showInText(chip.index)
        }
        PlainButton {
            Accessible.name: qsTr("Remove %1").arg(chip.title)
            hint: qsTr("Remove")
            iconName: "close"
            onClicked: AttachmentListModel.remove(chip.index)
        }
    }
}
