import QtQuick
import QtQuick.Templates as T
import Varnel

// How the current file differs from what is there. Signs in front say it too, not the colours alone.
Rectangle {
    border.color: Theme.hairline
    border.width: 1
    color: Theme.code
    radius: Theme.radius

    ListView {
        id: list

        Accessible.name: qsTr("Differences")
        Accessible.role: Accessible.List
        activeFocusOnTab: true
        anchors.fill: parent
        anchors.margins: Theme.unit
        boundsBehavior: Flickable.StopAtBounds
        clip: true
        keyNavigationEnabled: false
        model: ProjectPreview.diff
        pixelAligned: true
        Keys.onDownPressed: contentY = Math.max(0, Math.min(contentHeight - height, contentY + Theme.control))
        Keys.onUpPressed: contentY = Math.max(0, contentY - Theme.control)

        delegate: DiffLineDelegate {
        }

        FocusRing {
            shown: list.activeFocus
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
}
