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

        target: null
        xAxis.enabled: true
        yAxis.enabled: false
        onActiveChanged: if (active)
            before = WindowLayout.sidebarWidth
        onActiveTranslationChanged: if (active)
            WindowLayout.sidebarWidth = before + Math.round((handle.LayoutMirroring.enabled ? -1 : 1)
                                                            * activeTranslation.x / Appearance.zoom)
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
