import QtQuick
import Varnel

// Looks through the public library of models. What is typed can also be pulled as it stands.
FocusScope {
    id: pane

    readonly property Item field: query

    PlainField {
        id: query

        anchors.left: parent.left
        anchors.right: searchButton.left
        anchors.rightMargin: Theme.gap
        fill: Theme.popup
        iconName: "search"
        maximumLength: 200
        placeholderText: qsTr("Search the model library")
        text: AppModel.modelQuery
        Keys.onDownPressed: list.forceActiveFocus(Qt.OtherFocusReason)
        onAccepted: AppModel.searchModels()
        onTextEdited: AppModel.modelQuery = text
    }
    PlainButton {
        id: searchButton

        anchors.right: parent.right
        outlined: true
        text: qsTr("Search")
        onClicked: AppModel.searchModels()
    }
    PlainText {
        id: explanation

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: query.bottom
        color: Theme.secondary
        font: Theme.metadataFont
        height: Theme.control
        line: Theme.metadataLine
        text: LibraryHitList.count > 0 ? qsTr("From Ollama’s public library") : qsTr("The search asks Ollama’s public library")
    }
    ChoiceList {
        id: list

        Accessible.name: qsTr("Models of the library")
        anchors.bottom: actions.top
        anchors.bottomMargin: Theme.gap
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: explanation.bottom
        model: LibraryHitList
        onUsed: LibraryHitList.pull(currentIndex)

        delegate: ChoiceRow {
            required property bool installed
            required property string summary

            detail: summary
            mark: installed ? qsTr("Installed") : ""
        }
    }
    Row {
        id: actions

        anchors.bottom: parent.bottom
        anchors.bottomMargin: Theme.gap
        anchors.left: parent.left
        anchors.right: parent.right
        spacing: Theme.gap

        PlainButton {
            enabled: list.currentIndex >= 0 && list.currentIndex < list.count && !AppModel.isPulling
            hint: qsTr("Fetch it to the server (Enter)")
            outlined: true
            text: qsTr("Pull")
            onClicked: LibraryHitList.pull(list.currentIndex)
        }
        PlainButton {
            enabled: query.length > 0 && !AppModel.isPulling
            hint: qsTr("Fetch the model of exactly this name, such as llama3.2:3b")
            text: qsTr("Pull what is typed")
            onClicked: AppModel.pullModel(query.text)
        }
    }
}
