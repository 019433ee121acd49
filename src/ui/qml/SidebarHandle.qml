import QtQuick
import Varnel

// The edge between the list and the conversation, to be dragged.
Item {
    id: handle

    Accessible.ignored: true
    width: Theme.gap

    HoverHandler {
        cursorShape: Qt.SplitHCursor
    }
    DragHandler {
        id: drag

        property int before: 0

        // The movement that makes it active counts too: of a quick one there may be no other.
        function follow() {
            const moved = centroid.scenePosition.x - centroid.scenePressPosition.x
            WindowLayout.sidebarWidth = before + Math.round((handle.LayoutMirroring.enabled ? -1 : 1) * moved / Appearance.zoom)
        }

        target: null
        xAxis.enabled: true
        yAxis.enabled: false
        onActiveChanged: {
            if (!active)
                return
            before = WindowLayout.sidebarWidth
            follow()
        }
        onActiveTranslationChanged: if (active)
            follow()
    }
    Rectangle {
        anchors.bottom: parent.bottom
        anchors.horizontalCenter: parent.horizontalCenter
        anchors.top: parent.top
        color: Theme.accent
        visible: drag.active
        width: 2
    }
}
