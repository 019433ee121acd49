import QtQuick
import QtQuick.Templates as T
import Varnel

// A title that is clicked to be edited.
T.AbstractButton {
    id: button

    required property string title

    Accessible.description: qsTr("Rename the conversation")
    Accessible.name: title
    Accessible.role: Accessible.Button
    Accessible.onPressAction: if (enabled)
        clicked()
    focusPolicy: Qt.StrongFocus
    implicitHeight: Theme.control
    implicitWidth: label.implicitWidth + 2 * Theme.gap
    Keys.onEnterPressed: clicked()
    Keys.onReturnPressed: clicked()

    background: Rectangle {
        color: button.down ? Theme.pressed : button.hovered ? Theme.hover : "transparent"
        radius: Theme.radius

        FocusRing {
            shown: button.visualFocus
        }
    }
    PlainText {
        id: label

        Accessible.ignored: true
        anchors.fill: parent
        font: Theme.uiStrongFont
        leftPadding: Theme.gap
        rightPadding: Theme.gap
        text: button.title
    }
    HoverHandler {
        cursorShape: Qt.IBeamCursor
    }
}
