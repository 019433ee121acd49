import QtQuick
import Varnel

// The model that new conversations begin with; one has to be fetched where there is none.
FocusScope {
    id: page

    signal modelsAsked

    PlainText {
        id: explanation

        anchors.left: parent.left
        anchors.leftMargin: Theme.turn
        anchors.right: parent.right
        anchors.rightMargin: Theme.turn
        anchors.top: parent.top
        anchors.topMargin: Theme.paragraph
        text: ServerModelList.count > 0 ? qsTr("New conversations begin with %1. Every conversation can have another one.").arg(PreferenceEditor.defaultModel) : qsTr("A model is fetched once, by the server, and stays on its disk.")
        wrapMode: Text.Wrap
    }
    ServerModelListView {
        id: list

        anchors.bottom: actions.top
        anchors.bottomMargin: Theme.gap
        anchors.left: explanation.left
        anchors.right: explanation.right
        anchors.top: explanation.bottom
        anchors.topMargin: Theme.paragraph
        onPointed: ServerModelList.makeDefault(currentIndex)
        onUsed: ServerModelList.makeDefault(currentIndex)
        Component.onCompleted: currentIndex = ServerModelList.defaultRow
    }
    Flow {
        id: actions

        anchors.bottom: pull.top
        anchors.bottomMargin: Theme.gap
        anchors.left: explanation.left
        anchors.right: explanation.right
        spacing: Theme.gap

        PlainButton {
            enabled: Link.connected && !AppModel.isPulling
            outlined: true
            text: qsTr("Pull %1").arg(PreferenceEditor.defaultModel)
            visible: ServerModelList.defaultRow < 0
            onClicked: AppModel.pullModel(PreferenceEditor.defaultModel)
        }
        PlainButton {
            enabled: Link.connected
            outlined: true
            text: qsTr("Find another…")
            onClicked: page.modelsAsked()
        }
    }
    PullStrip {
        id: pull

        anchors.bottom: parent.bottom
        anchors.left: explanation.left
        anchors.right: explanation.right
        visible: LibraryHitList.pullLine.length > 0
    }
}
