import QtQuick
import Varnel

// The models of the server, and the library that more of them come from. A pull goes on when the sheet closes.
Sheet {
    id: sheet

    firstFocus: library.field
    title: qsTr("Models")
    wantedHeight: 620
    wantedWidth: 860
    onAboutToShow: AppModel.refreshRunningModels()

    ServerModelPane {
        id: server

        anchors.bottom: pull.top
        anchors.left: parent.left
        anchors.leftMargin: Theme.gutter
        anchors.top: parent.top
        anchors.topMargin: Theme.paragraph
        width: Math.round((parent.width - 3 * Theme.gutter) / 2)
    }
    LibraryPane {
        id: library

        anchors.bottom: pull.top
        anchors.right: parent.right
        anchors.rightMargin: Theme.gutter
        anchors.top: parent.top
        anchors.topMargin: Theme.paragraph
        width: server.width
    }
    PullStrip {
        id: pull

        anchors.bottom: parent.bottom
        anchors.left: parent.left
        anchors.leftMargin: Theme.gutter
        anchors.right: parent.right
        anchors.rightMargin: Theme.gutter
    }
}
