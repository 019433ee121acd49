import QtQuick
import Varnel

// The models of the server, to choose from.
ChoiceList {
    id: list

    Accessible.name: qsTr("Installed models")
    model: ServerModelList

    delegate: ChoiceRow {
        required property string facts
        required property bool isDefault
        required property string loaded

        detail: facts
        mark: isDefault && loaded.length > 0 ? qsTr("Default · %1").arg(loaded) : isDefault ? qsTr("Default") : loaded
    }
    PlainText {
        anchors.left: parent.left
        anchors.right: parent.right
        color: Theme.secondary
        horizontalAlignment: Text.AlignHCenter
        text: Link.connected ? qsTr("The server has no models yet") : qsTr("The server has not told which models it has")
        visible: list.count === 0
        wrapMode: Text.Wrap
        y: Theme.turn
    }
}
