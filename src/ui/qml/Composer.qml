import QtQuick
import QtQuick.Templates as T
import Varnel

// Where the next prompt is written, with what goes along with it.
FocusScope {
    id: composer

    function focusText() {
        editor.forceActiveFocus(Qt.OtherFocusReason)
    }
    function openModelPicker() {
        picker.open()
    }

    implicitHeight: frame.height

    Rectangle {
        id: frame

        anchors.left: parent.left
        anchors.right: parent.right
        border.color: editor.activeFocus ? Theme.accent : Theme.controlBorder
        border.width: editor.activeFocus ? Theme.ringWidth : 1
        color: Theme.dark ? Theme.popup : "white"
        height: scroll.height + controls.height + Theme.px(22)
        radius: Theme.composerRadius

        Flickable {
            id: scroll

            anchors.left: parent.left
            anchors.right: parent.right
            anchors.top: parent.top
            anchors.topMargin: Theme.px(10)
            boundsBehavior: Flickable.StopAtBounds
            clip: true
            contentHeight: editor.height
            // One line to ten; then it scrolls.
            height: Math.min(editor.implicitHeight, 10 * metrics.lineSpacing + 2 * Theme.unit)
            interactive: false
            pixelAligned: true

            PromptEditor {
                id: editor

                width: scroll.width
                onCursorRectangleChanged: scroll.show(cursorRectangle)
            }
            T.ScrollBar.vertical: PlainScrollBar {
                policy: editor.height > scroll.height ? T.ScrollBar.AsNeeded : T.ScrollBar.AlwaysOff
            }
            WheelHandler {
                onWheel: event => scroll.contentY = Math.max(0, Math.min(scroll.contentHeight - scroll.height,
                                                                        scroll.contentY - event.angleDelta.y / 2))
            }

            function show(place: rect) {
                if (place.y < contentY)
                    contentY = Math.max(0, place.y - Theme.unit)
                else if (place.y + place.height > contentY + height)
                    contentY = place.y + place.height - height + Theme.unit
            }
        }
        Item {
            id: controls

            anchors.bottom: parent.bottom
            anchors.bottomMargin: Theme.gap
            anchors.left: parent.left
            anchors.leftMargin: Theme.gap
            anchors.right: parent.right
            anchors.rightMargin: Theme.gap
            height: Theme.control

            ModelButton {
                id: modelButton

                anchors.left: parent.left
                maximumWidth: controls.width - send.width - (connect.visible ? connect.width : 0) - Theme.turn
                opened: picker.opened
                onClicked: picker.open()

                ModelPicker {
                    id: picker

                    onClosed: composer.focusText()
                }
            }
            PlainButton {
                id: connect

                anchors.right: send.left
                anchors.rightMargin: Theme.gap
                hint: qsTr("Look for the server")
                outlined: true
                text: qsTr("Connect")
                visible: Link.offline
                onClicked: {
                    AppModel.openConnection()
                    composer.focusText()
                }
            }
            SendButton {
                id: send

                anchors.right: parent.right
                onUsed: composer.focusText()
            }
        }
    }
    FontMetrics {
        id: metrics

        font: editor.font
    }
    // The frame is a target too: what is not a control leads to the text.
    TapHandler {
        onTapped: composer.focusText()
    }
}
