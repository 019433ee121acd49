import QtQuick
import QtQuick.Templates as T
import Varnel

ListView {
    id: list

    Accessible.name: qsTr("Items")
    Accessible.role: Accessible.List
    activeFocusOnTab: true
    boundsBehavior: Flickable.StopAtBounds
    cacheBuffer: 0
    clip: true
    currentIndex: LibraryListModel.currentRow
    highlightMoveDuration: 0
    keyNavigationEnabled: false
    model: LibraryListModel
    pixelAligned: true
    // A key that is held down deletes one item, not all below it.
    Keys.onDeletePressed: event => {
        if (!event.isAutoRepeat)
            LibraryListModel.remove()
    }
    Keys.onDownPressed: LibraryListModel.currentRow = Math.min(count - 1, currentIndex + 1)
    Keys.onEnterPressed: LibraryListModel.toggleAttached()
    Keys.onReturnPressed: LibraryListModel.toggleAttached()
    Keys.onUpPressed: LibraryListModel.currentRow = Math.max(0, currentIndex - 1)

    delegate: LibraryDelegate {
    }

    PlainText {
        anchors.left: parent.left
        anchors.leftMargin: Theme.gutter
        anchors.right: parent.right
        anchors.rightMargin: Theme.gutter
        anchors.top: parent.top
        anchors.topMargin: Theme.px(48)
        color: Theme.secondary
        horizontalAlignment: Text.AlignHCenter
        text: LibraryListModel.total === 0 ? qsTr("Nothing here yet. Drop files, paste a picture or an address, or import.")
                                           : LibraryListModel.showsDeleted && AppModel.libraryQuery.length === 0
                                             ? qsTr("Nothing was deleted here") : qsTr("Nothing here is like that")
        visible: LibraryListModel.count === 0
        wrapMode: Text.Wrap
    }
    PlainScrollBar {
        anchors.bottom: parent.bottom
        anchors.right: parent.right
        anchors.top: parent.top
        orientation: Qt.Vertical
        policy: list.contentHeight > list.height ? T.ScrollBar.AsNeeded : T.ScrollBar.AlwaysOff
        position: list.visibleArea.yPosition
        size: list.visibleArea.heightRatio
        onPositionChanged: if (pressed)
            list.contentY = list.originY + position * list.contentHeight
    }
}
