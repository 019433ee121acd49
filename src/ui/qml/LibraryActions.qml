import QtQuick
import Varnel

// What can be done with the chosen item. Only what cannot be taken back is asked about.
Column {
    id: actions

    property bool asking: false

    signal finished

    spacing: Theme.gap

    Connections {
        function onCurrentChanged() {
            actions.asking = false
        }

        target: LibraryListModel
    }
    Flow {
        spacing: Theme.gap
        visible: !LibraryListModel.currentDeleted
        width: parent.width

        PlainButton {
            iconName: LibraryListModel.currentAttached ? "check" : "attach"
            primary: !LibraryListModel.currentAttached
            outlined: LibraryListModel.currentAttached
            text: LibraryListModel.currentAttached ? qsTr("Attached") : qsTr("Attach")
            onClicked: LibraryListModel.toggleAttached()
        }
        PlainButton {
            hint: qsTr("Open a new conversation about it")
            outlined: true
            text: qsTr("Hand off")
            onClicked: {
                LibraryListModel.handOff()
                actions.finished()
            }
        }
        PlainButton {
            hint: qsTr("Put the text of the page into the message")
            outlined: true
            text: qsTr("Read page")
            visible: LibraryListModel.currentAddress.length > 0
            onClicked: {
                Intake.readPage(LibraryListModel.currentAddress)
                actions.finished()
            }
        }
        PlainButton {
            outlined: true
            text: qsTr("Delete")
            onClicked: LibraryListModel.remove()
        }
    }
    Flow {
        spacing: Theme.gap
        visible: LibraryListModel.currentDeleted && !actions.asking
        width: parent.width

        PlainButton {
            outlined: true
            text: qsTr("Restore")
            onClicked: LibraryListModel.restore()
        }
        PlainButton {
            ink: Theme.error
            outlined: true
            text: qsTr("Delete for good…")
            onClicked: {
                actions.asking = true
                keep.forceActiveFocus(Qt.OtherFocusReason)
            }
        }
    }
    PlainText {
        Accessible.role: Accessible.AlertMessage
        text: qsTr("Delete the item and its stored copy for good? This cannot be undone.")
        visible: actions.asking
        width: parent.width
        wrapMode: Text.Wrap
    }
    Flow {
        spacing: Theme.gap
        visible: actions.asking
        width: parent.width

        PlainButton {
            id: keep

            outlined: true
            text: qsTr("Keep it")
            onClicked: actions.asking = false
        }
        PlainButton {
            ink: Theme.error
            outlined: true
            text: qsTr("Delete for good")
            onClicked: {
                actions.asking = false
                LibraryListModel.removeForGood()
            }
        }
    }
}
