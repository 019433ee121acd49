import QtQuick
import Varnel

// A backup; restoring it is asked about in its own row.
Item {
    id: entry

    required property int index
    required property string time
    // Whether it is asked if that is meant.
    property bool asked: false

    height: Theme.control
    width: parent ? parent.width : 0

    PlainText {
        anchors.left: parent.left
        anchors.right: buttons.left
        anchors.rightMargin: Theme.gap
        height: parent.height
        text: entry.asked ? qsTr("Replace everything with this?") : entry.time
    }
    Row {
        id: buttons

        anchors.right: parent.right
        spacing: Theme.gap

        PlainButton {
            Accessible.name: qsTr("Restore the backup of %1").arg(entry.time)
            outlined: true
            text: qsTr("Restore…")
            visible: !entry.asked
            onClicked: {
                entry.asked = true
                cancel.forceActiveFocus(Qt.OtherFocusReason)
            }
        }
        PlainButton {
            id: cancel

            text: qsTr("Cancel")
            visible: entry.asked
            onClicked: entry.asked = false
        }
        PlainButton {
            outlined: true
            text: qsTr("Restore")
            visible: entry.asked
            onClicked: {
                entry.asked = false
                BackupListModel.restore(entry.index)
            }
        }
    }
}
