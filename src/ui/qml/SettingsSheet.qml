import QtQuick
import Varnel

// The settings, page by page.
Sheet {
    id: sheet

    property int page: 0

    signal firstRunAsked
    signal modelsAsked

    firstFocus: firstTab
    title: qsTr("Settings")
    wantedHeight: 640
    wantedWidth: 800
    // What stands in a field that was not left is meant too.
    onAboutToHide: ConnectionEditor.apply()

    Column {
        id: tabs

        Accessible.name: sheet.title
        Accessible.role: Accessible.PageTabList
        anchors.left: parent.left
        anchors.margins: Theme.paragraph
        anchors.top: parent.top
        spacing: Theme.unit
        width: Theme.px(136)

        SettingsTab {
            id: firstTab

            current: sheet.page
            page: 0
            text: qsTr("Connection")
            onChosen: page => sheet.page = page
        }
        SettingsTab {
            current: sheet.page
            page: 1
            text: qsTr("Models")
            onChosen: page => sheet.page = page
        }
        SettingsTab {
            current: sheet.page
            page: 2
            text: qsTr("Providers")
            onChosen: page => sheet.page = page
        }
        SettingsTab {
            current: sheet.page
            page: 3
            text: qsTr("Files")
            onChosen: page => sheet.page = page
        }
        SettingsTab {
            current: sheet.page
            page: 4
            text: qsTr("About")
            onChosen: page => sheet.page = page
        }
    }
    Rectangle {
        id: edge

        anchors.bottom: parent.bottom
        anchors.left: tabs.right
        anchors.leftMargin: Theme.paragraph
        anchors.top: parent.top
        color: Theme.hairline
        width: 1
    }
    Item {
        id: area

        anchors.bottom: parent.bottom
        anchors.bottomMargin: Theme.unit
        anchors.left: edge.right
        anchors.right: parent.right
        anchors.top: parent.top

        Loader {
            id: connection

            active: sheet.page === 0
            anchors.fill: parent
            sourceComponent: SettingsConnection {
            }
        }
        Loader {
            id: models

            active: sheet.page === 1
            anchors.fill: parent
            sourceComponent: SettingsModels {
            }
        }
        Loader {
            active: sheet.page === 2
            anchors.fill: parent
            sourceComponent: SettingsProviders {
            }
        }
        Loader {
            active: sheet.page === 3
            anchors.fill: parent
            sourceComponent: SettingsFiles {
            }
        }
        Loader {
            active: sheet.page === 4
            anchors.fill: parent
            sourceComponent: SettingsAbout {
            }
        }
    }
    Connections {
        function onFirstRunAsked() {
            sheet.firstRunAsked()
        }

        target: connection.item as SettingsConnection
    }
    Connections {
        function onModelsAsked() {
            sheet.modelsAsked()
        }

        target: models.item as SettingsModels
    }
}
