import QtQuick
import QtQuick.Templates as T
import Varnel

// How full the context of the conversation is. It never keeps one from sending.
T.AbstractButton {
    id: ring

    required property bool brief
    readonly property color tone: ComposerState.contextShare >= 0.9 ? Theme.error
                                  : ComposerState.contextShare >= 0.75 ? Theme.warning : Theme.secondary

    Accessible.description: ComposerState.contextDetail
    Accessible.name: qsTr("Context %1").arg(ComposerState.contextLabel)
    Accessible.role: Accessible.ProgressBar
    focusPolicy: Qt.StrongFocus
    implicitHeight: Theme.control
    implicitWidth: label.visible ? Theme.px(30) + label.implicitWidth + Theme.gap : Theme.control

    background: Item {
        FocusRing {
            shown: ring.visualFocus
        }
    }
    ShareRing {
        id: circle

        anchors.left: parent.left
        anchors.leftMargin: Theme.px(7)
        anchors.verticalCenter: parent.verticalCenter
        color: ring.tone
        height: Theme.px(18)
        share: ComposerState.contextShare
        track: Theme.hairline
        width: Theme.px(18)
    }
    PlainText {
        id: label

        Accessible.ignored: true
        anchors.left: circle.right
        anchors.leftMargin: Theme.px(5)
        anchors.verticalCenter: parent.verticalCenter
        color: ring.tone
        font: Theme.metadataFont
        line: Theme.metadataLine
        text: ComposerState.contextLabel
        visible: ComposerState.contextShare >= 0.5 && !ring.brief
    }
    PlainToolTip {
        text: ComposerState.contextDetail
        visible: ring.hovered || ring.visualFocus || ring.down
    }
}
