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

        // Never off, so that the keyboard stays: a newer attempt takes the place of the one under way.
        PlainButton {
            hint: qsTr("Ask the server for its version and models")
            outlined: true
            text: qsTr("Test")
            onClicked: ConnectionEditor.test()
        }
        PlainButton {
            readonly property bool up: AppModel.tunnelIsUp || Link.connected

            outlined: true
            text: up ? qsTr("Disconnect") : qsTr("Connect")
            onClicked: {
                if (up)
                    AppModel.closeConnection()
                else
                    ConnectionEditor.open()
            }
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
