import QtQuick
import QtQuick.Templates as T
import Varnel

// A part of the program that lies over the window until it is closed: a title, a button that closes it, and what
// is put in. Tab stays inside; on closing, the keyboard goes back to where it was.
T.Popup {
    id: sheet

    required property string title
    // How large it is where the window has room for that, at zoom 1.
    property int wantedHeight: 560
    property int wantedWidth: 640
    // What the keyboard is in first; the button that closes the sheet if it is null.
    property Item firstFocus: null
    default property alias content: body.data

    anchors.centerIn: T.Overlay.overlay
    closePolicy: T.Popup.CloseOnEscape
    dim: true
    focus: true
    height: T.Overlay.overlay ? Math.min(Theme.px(wantedHeight), T.Overlay.overlay.height - 2 * Theme.gutter) : 0
    modal: true
    padding: 0
    width: T.Overlay.overlay ? Math.min(Theme.px(wantedWidth), T.Overlay.overlay.width - 2 * Theme.gutter) : 0
    onOpened: {
        const first = firstFocus ? firstFocus : closeButton
        first.forceActiveFocus(Qt.PopupFocusReason)
    }

    T.Overlay.modal: Rectangle {
        color: Qt.rgba(0, 0, 0, Theme.dark ? 0.5 : 0.25)
    }
    background: PopupSurface {
    }
    Item {
        Accessible.name: sheet.title
        Accessible.role: Accessible.Dialog
        anchors.fill: parent

        Item {
            id: head

            anchors.left: parent.left
            anchors.right: parent.right
            anchors.top: parent.top
            height: Theme.px(56)

            PlainText {
                Accessible.role: Accessible.Heading
                anchors.left: parent.left
                anchors.leftMargin: Theme.turn
                anchors.right: closeButton.left
                anchors.rightMargin: Theme.gap
                anchors.verticalCenter: parent.verticalCenter
                font: Theme.titleFont
                text: sheet.title
            }
            PlainButton {
                id: closeButton

                anchors.right: parent.right
                anchors.rightMargin: Theme.paragraph
                anchors.verticalCenter: parent.verticalCenter
                hint: qsTr("Close (Esc)")
                iconName: "close"
                onClicked: sheet.close()
            }
            Rectangle {
                anchors.bottom: parent.bottom
                anchors.left: parent.left
                anchors.right: parent.right
                color: Theme.hairline
                height: 1
            }
        }
        FocusScope {
            id: body

            anchors.bottom: parent.bottom
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.top: head.bottom
        }
    }
}
