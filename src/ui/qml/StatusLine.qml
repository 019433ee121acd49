import QtQuick
import Varnel

// One line about what just happened, never a dialog; and beside it what can still be done about it.
Item {
    id: status

    implicitHeight: Theme.statusLine

    PlainText {
        Accessible.role: Accessible.StatusBar
        anchors.bottom: parent.bottom
        anchors.left: parent.left
        anchors.leftMargin: Theme.gutter
        anchors.top: parent.top
        color: Theme.secondary
        font: Theme.metadataFont
        line: Theme.metadataLine
        text: ComposerState.statusLine
        width: Math.min(implicitWidth, status.width - 2 * Theme.gutter - actions.width)

        HoverHandler {
            id: hover
        }
        PlainToolTip {
            text: ComposerState.statusLine
            visible: hover.hovered && (parent as PlainText).truncated
        }
    }
    // Larger than the line, for the pointer's sake.
    Row {
        id: actions

        anchors.right: parent.right
        anchors.rightMargin: Theme.gutter
        anchors.verticalCenter: parent.verticalCenter

        PlainButton {
            hint: qsTr("Stop reading the page (Esc)")
            ink: Theme.accent
            text: qsTr("Stop reading")
            visible: AppModel.isReadingPage
            onClicked: AppModel.stopReadingPage()
        }
        PlainButton {
            hint: qsTr("Put back what the last writing overwrote")
            iconName: "restore"
            ink: Theme.accent
            text: qsTr("Restore files")
            visible: ProjectPreview.offersRestore
            onClicked: ProjectPreview.restore()
        }
        PlainButton {
            hint: qsTr("Keep what was written")
            iconName: "close"
            visible: ProjectPreview.offersRestore
            onClicked: ProjectPreview.declineRestore()
        }
    }
}
