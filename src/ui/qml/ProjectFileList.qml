import QtQuick
import QtQuick.Templates as T
import Varnel

// The files that a reply gives, each with what would become of it.
ListView {
    id: list

    Accessible.name: qsTr("Files")
    Accessible.role: Accessible.List
    activeFocusOnTab: true
    boundsBehavior: Flickable.StopAtBounds
    clip: true
    currentIndex: ProjectPreview.currentRow
    highlightMoveDuration: 0
    keyNavigationEnabled: false
    model: ProjectPreview
    pixelAligned: true
    Keys.onDownPressed: ProjectPreview.currentRow = Math.min(count - 1, currentIndex + 1)
    Keys.onSpacePressed: toggle(currentIndex)
    Keys.onUpPressed: ProjectPreview.currentRow = Math.max(0, currentIndex - 1)

    function toggle(row: int) {
        const item = itemAtIndex(row) as ProjectFileDelegate
        if (item)
            ProjectPreview.setTicked(row, !item.ticked)
    }

    delegate: ProjectFileDelegate {
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
