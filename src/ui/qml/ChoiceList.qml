import QtQuick
import Varnel

// A list that the keyboard goes through as one thing, with a row that is pointed at.
ListView {
    id: list

    // By an arrow or a click, and not by the keyboard's coming here.
    signal pointed
    signal used

    property bool arriving: false

    Accessible.role: Accessible.List
    activeFocusOnTab: count > 0
    boundsBehavior: Flickable.StopAtBounds
    cacheBuffer: 0
    clip: true
    currentIndex: -1
    highlightMoveDuration: 0
    keyNavigationEnabled: true
    pixelAligned: true
    Keys.onEnterPressed: used()
    Keys.onReturnPressed: used()
    onActiveFocusChanged: {
        if (!activeFocus || currentIndex >= 0)
            return
        arriving = true
        currentIndex = 0
        arriving = false
    }
    onCurrentIndexChanged: if (activeFocus && !arriving)
        pointed()

    PlainScrollBar {
        anchors.bottom: parent.bottom
        anchors.right: parent.right
        anchors.top: parent.top
        orientation: Qt.Vertical
        policy: list.contentHeight > list.height ? PlainScrollBar.AsNeeded : PlainScrollBar.AlwaysOff
        position: list.visibleArea.yPosition
        size: list.visibleArea.heightRatio
        onPositionChanged: if (pressed)
            list.contentY = list.originY + position * list.contentHeight
    }
}
