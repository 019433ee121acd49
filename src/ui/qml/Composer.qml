import QtQuick
import QtQuick.Templates as T
import Varnel

// Where the next prompt is written, with what goes along with it.
FocusScope {
    id: composer

    signal libraryAsked

    function focusText() {
        editor.forceActiveFocus(Qt.OtherFocusReason)
    }
    function openModelPicker() {
        controls.openModelPicker()
    }

    implicitHeight: frame.height

    Rectangle {
        id: frame

        anchors.left: parent.left
        anchors.right: parent.right
        border.color: editor.activeFocus ? Theme.accent : Theme.controlBorder
        border.width: editor.activeFocus ? Theme.ringWidth : 1
        color: Theme.dark ? Theme.popup : "white"
        height: column.height + column.y + Theme.gap
        radius: Theme.composerRadius

        Column {
            id: column

            anchors.left: parent.left
            anchors.right: parent.right
            spacing: Theme.unit
            y: Theme.px(10)

            CloudBar {
                visible: ComposerState.asksCloud
                width: parent.width
                onAnswered: composer.focusText()
            }
            EditBar {
                visible: PromptEdit.active
                width: parent.width
                onEnded: composer.focusText()
            }
            ComposerNotice {
                visible: ComposerState.notice.length > 0
                width: parent.width
            }
            AttachmentChips {
                // An earlier prompt keeps what went along with it.
                visible: AttachmentListModel.count > 0 && !PromptEdit.active
                width: parent.width
                onUsed: composer.focusText()
            }
            Flickable {
                id: scroll

                boundsBehavior: Flickable.StopAtBounds
                clip: true
                contentHeight: editor.height
                // One line to ten, fewer in a low window; then it scrolls.
                height: Math.min(editor.implicitHeight, 10 * metrics.lineSpacing + 2 * Theme.unit,
                                 Math.max(Theme.px(40), composer.Window.height * 0.35))
                interactive: false
                pixelAligned: true
                width: parent.width

                PromptEditor {
                    id: editor

                    width: scroll.width
                    onCursorRectangleChanged: scroll.show(cursorRectangle)
                    onMenuAsked: (position, place) => menu.ask(position, place)
                }
                SpellMarks {
                    id: spelling

                    color: Theme.error
                    cursorPosition: editor.cursorPosition
                    document: editor.textDocument
                    height: scroll.height
                    origin: Qt.point(editor.leftPadding, editor.topPadding - scroll.contentY)
                    width: scroll.width
                    y: scroll.contentY
                    zoom: Appearance.zoom
                }
                ComposerMenu {
                    id: menu

                    editor: editor
                    spelling: spelling
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
            ComposerControls {
                id: controls

                width: parent.width
                onLibraryAsked: composer.libraryAsked()
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
