import QtQuick
import Varnel

// The models of the server, to choose from.
ChoiceList {
    id: list

    // What was pointed at before the list changed.
    property string kept: ""

    Accessible.name: qsTr("Installed models")
    model: ServerModelList
    onCountChanged: {
        const row = kept.length > 0 ? ServerModelList.rowOf(kept) : -1
        arriving = true
        currentIndex = row >= 0 || !activeFocus ? row : Math.min(currentIndex, count - 1)
        arriving = false
    }

    delegate: ChoiceRow {
        required property string facts
        required property bool isDefault
        required property string loaded

        detail: facts
        mark: isDefault && loaded.length > 0 ? qsTr("Default · %1").arg(loaded) : isDefault ? qsTr("Default") : loaded
    }
    Connections {
        function onModelAboutToBeReset() {
            list.kept = ServerModelList.nameAt(list.currentIndex)
        }

        target: ServerModelList
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
