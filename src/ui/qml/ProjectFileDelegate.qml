import QtQuick
import QtQuick.Templates as T
import Varnel

// A file of the preview: a tick, its path and what would become of it.
T.ItemDelegate {
    id: entry

    required property int index
    required property string path
    required property int change
    required property string fileState
    required property bool ticked
    required property bool tickable

    Accessible.description: fileState
    Accessible.name: path
    Accessible.selected: ListView.isCurrentItem
    focusPolicy: Qt.NoFocus
    height: Theme.px(34)
    width: ListView.view.width
    onClicked: ProjectPreview.currentRow = index

    function toggle() {
        ProjectPreview.setTicked(index, !ticked)
    }

    background: Rectangle {
        border.color: Theme.accent
        border.width: entry.ListView.isCurrentItem && entry.ListView.view.activeFocus ? Theme.ringWidth : 0
        color: entry.ListView.isCurrentItem ? Theme.chosen : entry.hovered ? Theme.hover : "transparent"
        radius: Theme.radius
    }
    Item {
        id: box

        // Apart from the row: a control of Qt's tells its own role, whatever it is given.
        Accessible.checkable: entry.tickable
        Accessible.checked: entry.ticked
        Accessible.name: qsTr("Write %1").arg(entry.path)
        Accessible.onPressAction: entry.toggle()
        Accessible.onToggleAction: entry.toggle()
        Accessible.role: Accessible.CheckBox
        anchors.left: parent.left
        anchors.verticalCenter: parent.verticalCenter
        height: Theme.control
        width: Theme.px(40)

        Rectangle {
            anchors.centerIn: parent
            border.color: entry.ticked ? Theme.accent : Theme.controlBorder
            border.width: 1
            color: entry.ticked ? Theme.accent : "transparent"
            height: Theme.px(18)
            opacity: entry.tickable ? 1 : 0.4
            radius: Theme.unit
            width: Theme.px(18)

            Icon {
                anchors.fill: parent
                color: Theme.inkOnAccent
                name: "check"
                visible: entry.ticked
            }
        }
        TapHandler {
            enabled: entry.tickable
            onTapped: {
                ProjectPreview.currentRow = entry.index
                entry.toggle()
            }
        }
    }
    PlainText {
        Accessible.ignored: true
        anchors.left: box.right
        anchors.right: stateText.left
        anchors.rightMargin: Theme.gap
        anchors.verticalCenter: parent.verticalCenter
        elide: Text.ElideMiddle
        font: Theme.codeFont
        text: entry.path
    }
    PlainText {
        id: stateText

        Accessible.ignored: true
        anchors.right: parent.right
        anchors.rightMargin: Theme.gutter
        anchors.verticalCenter: parent.verticalCenter
        color: entry.change === ProjectPreview.Change.Refused ? Theme.error
               : entry.change === ProjectPreview.Change.Unchanged ? Theme.secondary
               : entry.tickable && !entry.ticked ? Theme.warning : Theme.accent
        font: Theme.metadataFont
        line: Theme.metadataLine
        text: entry.fileState
    }
}
