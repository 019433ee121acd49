import QtQuick
import Varnel

// How the server is reached, and whether it answers.
SettingsPage {
    id: page

    signal firstRunAsked

    title: qsTr("Connection")

    ConnectionFields {
    }
    ConnectionResult {
    }
    Flow {
        spacing: Theme.gap
        width: parent.width

        PlainButton {
            enabled: !Link.connecting
            hint: qsTr("Ask the server for its version and models")
            outlined: true
            text: qsTr("Test")
            onClicked: ConnectionEditor.test()
        }
        PlainButton {
            enabled: !Link.connecting
            outlined: true
            text: qsTr("Connect")
            visible: !AppModel.tunnelIsUp && !Link.connected
            onClicked: ConnectionEditor.open()
        }
        PlainButton {
            outlined: true
            text: qsTr("Disconnect")
            visible: AppModel.tunnelIsUp || Link.connected
            onClicked: AppModel.closeConnection()
        }
        PlainButton {
            text: qsTr("Open logs")
            onClicked: ConnectionEditor.openLogs()
        }
        PlainButton {
            hint: qsTr("Go through the first steps again")
            text: qsTr("Set up again…")
            onClicked: page.firstRunAsked()
        }
    }
}
