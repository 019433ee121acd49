import QtQuick
import Varnel

// All that is kept to be attached: found on the left, looked at and changed on the right.
Sheet {
    id: sheet

    readonly property bool narrow: width < Theme.px(640)

    firstFocus: filters.searchField
    title: qsTr("Library")
    wantedHeight: 620
    wantedWidth: 860
    onAboutToShow: filters.searchField.clear()

    Item {
        anchors.fill: parent
        anchors.margins: Theme.gutter
        Keys.onPressed: event => {
            if (event.matches(StandardKey.Paste) && Intake.pasteIntoLibrary(LibraryListModel.folder))
                event.accepted = true
        }

        LibraryFilters {
            id: filters

            anchors.left: parent.left
            anchors.right: parent.right
            list: list
        }
        LibraryList {
            id: list

            anchors.bottom: parent.bottom
            anchors.left: parent.left
            anchors.top: filters.bottom
            anchors.topMargin: Theme.gap
            width: Math.round(parent.width * (sheet.narrow ? 0.45 : 0.52))
        }
        Rectangle {
            id: divider

            anchors.bottom: parent.bottom
            anchors.left: list.right
            anchors.leftMargin: Theme.gap
            anchors.top: list.top
            color: Theme.hairline
            width: 1
        }
        LibraryDetails {
            anchors.bottom: parent.bottom
            anchors.left: divider.right
            anchors.leftMargin: Theme.gutter
            anchors.right: parent.right
            anchors.top: list.top
            visible: LibraryListModel.currentRow >= 0
            onFinished: sheet.close()
        }
    }
    DropOverlay {
        anchors.fill: parent
        attaching: false
        folder: LibraryListModel.folder
        hint: qsTr("Drop to keep in the library")
    }
}
