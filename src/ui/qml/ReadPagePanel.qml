import QtQuick
import QtQuick.Templates as T
import Varnel

// Asks for the address of a page whose text is put into the message.
T.Popup {
    id: panel

    property var session

    closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutside
    focus: true
    height: column.height + 2 * padding
    margins: Theme.gap
    padding: Theme.gutter
    parent: T.Overlay.overlay
    width: Math.min(Theme.px(440), parent ? parent.width - 2 * Theme.gutter : 0)
    x: parent ? (parent.width - width) / 2 : 0
    y: parent ? (parent.height - height) / 3 : 0
    onAboutToShow: {
        session = AppModel.selectionId()
        address.clear()
    }
    onOpened: address.forceActiveFocus(Qt.PopupFocusReason)

    function read() {
        if (address.text.trim().length === 0)
            return
        Intake.readPage(address.text, session)
        close()
    }

    background: PopupSurface {
    }
    Column {
        id: column

        Accessible.name: qsTr("Read a web page")
        Accessible.role: Accessible.Dialog
        anchors.left: parent.left
        anchors.right: parent.right
        spacing: Theme.gap

        PlainText {
            font: Theme.uiStrongFont
            text: qsTr("Read a web page")
        }
        PlainField {
            id: address

            fill: Theme.popup
            iconName: "globe"
            maximumLength: 4000
            placeholderText: qsTr("Address of the page")
            width: parent.width
            Keys.onEnterPressed: panel.read()
            Keys.onReturnPressed: panel.read()
        }
        PlainText {
            color: Theme.secondary
            font: Theme.metadataFont
            line: Theme.metadataLine
            text: qsTr("This computer fetches the page; its text is put into the message.")
            width: parent.width
            wrapMode: Text.Wrap
        }
        PlainButton {
            anchors.right: parent.right
            enabled: address.text.trim().length > 0
            primary: true
            text: qsTr("Read")
            onClicked: panel.read()
        }
    }
}
