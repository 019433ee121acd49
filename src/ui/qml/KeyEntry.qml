import QtQuick
import Varnel

// A service, where its key comes from, and a place for another one. A typed key stands here only until it is
// saved.
Item {
    id: entry

    required property int index
    required property string name
    required property string line
    required property string note
    required property bool removable
    required property string problem

    function save() {
        if (KeyListModel.busy)
            return
        KeyListModel.save(index, field.text)
        field.clear()
    }

    Component.onDestruction: field.clear()
    height: column.height
    width: parent ? parent.width : 0

    Column {
        id: column

        spacing: Theme.unit
        width: parent.width

        Item {
            height: Theme.control
            width: parent.width

            PlainText {
                Accessible.ignored: true
                anchors.left: parent.left
                height: parent.height
                text: entry.name
                width: Theme.px(150) - Theme.paragraph
            }
            PlainField {
                id: field

                Accessible.description: entry.line
                Accessible.name: qsTr("%1 key").arg(entry.name)
                anchors.left: parent.left
                anchors.leftMargin: Theme.px(150)
                anchors.right: saveButton.left
                anchors.rightMargin: Theme.gap
                echoMode: TextInput.Password
                fill: Theme.popup
                inputMethodHints: Qt.ImhSensitiveData | Qt.ImhNoPredictiveText
                maximumLength: 4000
                placeholderText: entry.removable ? qsTr("Saved; type another to replace it") : qsTr("Paste a key")
                onAccepted: entry.save()
            }
            PlainButton {
                id: saveButton

                Accessible.name: qsTr("Save the %1 key").arg(entry.name)
                anchors.right: removeButton.left
                anchors.rightMargin: Theme.gap
                enabled: field.length > 0 && !KeyListModel.busy
                outlined: true
                text: qsTr("Save")
                onClicked: entry.save()
            }
            PlainButton {
                id: removeButton

                Accessible.name: qsTr("Remove the %1 key").arg(entry.name)
                anchors.right: parent.right
                enabled: entry.removable && !KeyListModel.busy
                outlined: true
                text: qsTr("Remove")
                onClicked: KeyListModel.remove(entry.index)
            }
        }
        SettingsNote {
            leftPadding: LayoutMirroring.enabled ? 0 : Theme.px(150)
            rightPadding: LayoutMirroring.enabled ? Theme.px(150) : 0
            text: entry.note.length > 0 ? entry.note + "\n" + entry.line : entry.line
        }
        SettingsNote {
            Accessible.role: Accessible.AlertMessage
            color: Theme.error
            leftPadding: LayoutMirroring.enabled ? 0 : Theme.px(150)
            rightPadding: LayoutMirroring.enabled ? Theme.px(150) : 0
            text: entry.problem
            visible: text.length > 0
        }
    }
}
