import QtQuick
import QtQuick.Templates as T
import Varnel

// Asks for the address of a link to keep.
T.Popup {
    id: panel

    property bool refused: false

    closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutsideParent
    focus: true
    height: column.height + 2 * padding
    margins: Theme.gap
    padding: Theme.gutter
    width: Theme.px(360)
    x: parent ? parent.width - width : 0
    y: parent ? parent.height + Theme.unit : 0
    onAboutToShow: {
        address.clear()
        refused = false
    }
    onOpened: address.forceActiveFocus(Qt.PopupFocusReason)

    function add() {
        refused = !LibraryListModel.addLink(address.text, LibraryListModel.folder)
        if (!refused)
            close()
    }

    background: PopupSurface {
    }
    Column {
        id: column

        Accessible.name: qsTr("Add a link")
        Accessible.role: Accessible.Dialog
        spacing: Theme.gap
        width: parent.width

        PlainField {
            id: address

            fill: Theme.popup
            iconName: "link"
            maximumLength: 4000
            placeholderText: qsTr("Address")
            width: parent.width
            Keys.onEnterPressed: panel.add()
            Keys.onReturnPressed: panel.add()
            onTextChanged: panel.refused = false
        }
        PlainText {
            color: Theme.error
            font: Theme.metadataFont
            line: Theme.metadataLine
            text: qsTr("This is no address of a web page.")
            visible: panel.refused
            width: parent.width
        }
        PlainButton {
            anchors.right: parent.right
            enabled: address.length > 0
            primary: true
            text: qsTr("Add")
            onClicked: panel.add()
        }
    }
}
