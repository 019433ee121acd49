import QtQuick
import Varnel

// The row below the text: what goes along, what answers, and with which settings.
Item {
    id: controls

    readonly property bool narrow: width < Theme.px(600)
    readonly property bool narrowest: width < Theme.px(460)

    signal libraryAsked
    // The keyboard belongs to the text again.
    signal used

    function openModelPicker() {
        picker.open()
    }

    height: Theme.control

    Row {
        id: left

        anchors.left: parent.left
        anchors.leftMargin: Theme.gap

        PlainButton {
            id: attach

            Accessible.role: Accessible.ButtonMenu
            hint: qsTr("Attach")
            iconName: "attach"
            onClicked: attachMenu.popup(attach, 0, -attachMenu.height - Theme.unit)

            AttachMenu {
                id: attachMenu

                onFilesAsked: filesDialog.ask()
                onGone: controls.used()
                onLibraryAsked: controls.libraryAsked()
                onPageAsked: pagePanel.open()
            }
            DialogLoader {
                id: filesDialog

                dialog: "AttachFilesDialog.qml"
            }
            ReadPagePanel {
                id: pagePanel

                onClosed: controls.used()
            }
        }
        ModelButton {
            maximumWidth: Math.max(Theme.px(64), controls.width - attach.width - choices.width - right.width - Theme.px(40))
            opened: picker.opened
            prefixed: !controls.narrow
            onClicked: picker.open()

            ModelPicker {
                id: picker

                onClosed: controls.used()
            }
        }
    }
    ComposerChoices {
        id: choices

        anchors.left: left.right
        anchors.leftMargin: Theme.unit
        brief: controls.narrow
        onUsed: controls.used()
    }
    Row {
        id: right

        anchors.right: parent.right
        anchors.rightMargin: Theme.gap
        spacing: Theme.unit

        ContextRing {
            brief: controls.narrowest
        }
        PlainButton {
            hint: Link.connecting ? qsTr("Looking for the server") : qsTr("Look for the server")
            iconName: controls.narrowest ? "restore" : ""
            outlined: true
            text: controls.narrowest ? "" : qsTr("Connect")
            visible: Link.offline
            onClicked: {
                AppModel.openConnection()
                controls.used()
            }
        }
        SendButton {
            onUsed: controls.used()
        }
    }
}
