import QtQuick
import Varnel

// The files of a reply before they are written into the project folder.
Sheet {
    id: sheet

    firstFocus: files
    title: qsTr("Write project files")
    wantedHeight: 680
    wantedWidth: 900
    onClosed: ProjectPreview.dismiss()

    Item {
        anchors.fill: parent
        anchors.margins: Theme.gutter

        PlainText {
            id: folder

            anchors.left: parent.left
            anchors.right: parent.right
            color: Theme.secondary
            elide: Text.ElideMiddle
            text: qsTr("Into %1").arg(ProjectPreview.folder)
        }
        ProjectFileList {
            id: files

            anchors.left: parent.left
            anchors.right: parent.right
            anchors.top: folder.bottom
            anchors.topMargin: Theme.gap
            height: Math.min(contentHeight, Math.round(parent.height * 0.36))
        }
        // A positioner takes no room for a text that does not show.
        Column {
            id: note

            anchors.left: parent.left
            anchors.right: parent.right
            anchors.top: files.bottom
            anchors.topMargin: Theme.gap

            PlainText {
                color: Theme.warning
                text: ProjectPreview.currentNote
                visible: text.length > 0
                width: parent.width
                wrapMode: Text.Wrap
            }
        }
        DiffView {
            anchors.bottom: notice.top
            anchors.bottomMargin: Theme.gap
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.top: note.bottom
            anchors.topMargin: note.height > 0 ? Theme.gap : 0
        }
        Column {
            id: notice

            anchors.bottom: actions.top
            anchors.bottomMargin: Theme.gap
            anchors.left: parent.left
            anchors.right: parent.right

            PlainText {
                Accessible.role: Accessible.AlertMessage
                color: Theme.error
                text: ProjectPreview.notice
                visible: text.length > 0
                width: parent.width
                wrapMode: Text.Wrap
            }
        }
        Row {
            id: actions

            anchors.bottom: parent.bottom
            anchors.right: parent.right
            spacing: Theme.gap

            PlainButton {
                hint: qsTr("Put back what the last writing overwrote")
                iconName: "restore"
                outlined: true
                text: qsTr("Restore")
                visible: ProjectPreview.canRestore
                onClicked: ProjectPreview.restore()
            }
            PlainButton {
                text: qsTr("Cancel")
                onClicked: sheet.close()
            }
            PlainButton {
                enabled: ProjectPreview.tickedCount > 0
                primary: true
                text: ProjectPreview.tickedCount === 1 ? qsTr("Write 1 file") : qsTr("Write %1 files").arg(ProjectPreview.tickedCount)
                onClicked: ProjectPreview.write()
            }
        }
    }
    Connections {
        function onShown() {
            sheet.open()
        }
        function onWritten() {
            sheet.close()
        }

        target: ProjectPreview
    }
}
