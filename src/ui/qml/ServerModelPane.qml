import QtQuick
import Varnel

// What the server has, and what can be done with the model that is pointed at.
FocusScope {
    id: pane

    // The name that is asked about before it is removed; none is empty.
    property string doomed: ""
    readonly property bool chosen: list.currentIndex >= 0 && list.currentIndex < list.count

    function ask() {
        if (!chosen || AppModel.isPulling)
            return
        doomed = ServerModelList.nameAt(list.currentIndex)
        keep.forceActiveFocus(Qt.OtherFocusReason)
    }
    function answer(remove: bool) {
        if (remove && ServerModelList.nameAt(list.currentIndex) === doomed)
            ServerModelList.removeModel(list.currentIndex)
        doomed = ""
        list.forceActiveFocus(Qt.OtherFocusReason)
    }

    PlainText {
        id: heading

        Accessible.role: Accessible.Heading
        anchors.left: parent.left
        anchors.right: parent.right
        font: Theme.uiStrongFont
        height: Theme.control
        text: qsTr("On %1").arg(AppModel.hostLabel.slice(0, 200))
    }
    PlainText {
        id: summary

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: heading.bottom
        color: Theme.secondary
        font: Theme.metadataFont
        height: Theme.control
        line: Theme.metadataLine
        text: ServerModelList.summary
    }
    ServerModelListView {
        id: list

        anchors.bottom: actions.top
        anchors.bottomMargin: Theme.gap
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: summary.bottom
        Keys.onDeletePressed: pane.ask()
        onUsed: ServerModelList.makeDefault(currentIndex)
    }
    Item {
        id: actions

        anchors.bottom: parent.bottom
        anchors.bottomMargin: Theme.gap
        anchors.left: parent.left
        anchors.right: parent.right
        height: Theme.control

        Row {
            spacing: Theme.gap
            visible: pane.doomed.length === 0

            PlainButton {
                enabled: pane.chosen
                hint: qsTr("New conversations begin with it")
                outlined: true
                text: qsTr("Make default")
                onClicked: ServerModelList.makeDefault(list.currentIndex)
            }
            PlainButton {
                enabled: pane.chosen && !AppModel.isPulling
                hint: qsTr("Remove it from the server (Del)")
                outlined: true
                text: qsTr("Remove…")
                onClicked: pane.ask()
            }
        }
        PlainText {
            Accessible.role: Accessible.AlertMessage
            anchors.left: parent.left
            anchors.right: keep.left
            anchors.rightMargin: Theme.gap
            elide: Text.ElideMiddle
            height: parent.height
            text: qsTr("Remove %1?").arg(pane.doomed)
            visible: pane.doomed.length > 0
        }
        PlainButton {
            id: keep

            anchors.right: drop.left
            anchors.rightMargin: Theme.gap
            text: qsTr("Keep")
            visible: pane.doomed.length > 0
            Keys.onEscapePressed: pane.answer(false)
            onClicked: pane.answer(false)
        }
        PlainButton {
            id: drop

            anchors.right: parent.right
            ink: Theme.error
            outlined: true
            text: qsTr("Remove")
            visible: pane.doomed.length > 0
            Keys.onEscapePressed: pane.answer(false)
            onClicked: pane.answer(true)
        }
    }
}
