import QtQuick
import Varnel

// Shows which control the keyboard has. It lies around its parent.
Rectangle {
    property bool shown: false

    anchors.fill: parent
    anchors.margins: -(Theme.ringWidth + Theme.ringOffset)
    border.color: Theme.accent
    border.width: Theme.ringWidth
    color: "transparent"
    radius: Theme.radius + Theme.ringWidth + Theme.ringOffset
    visible: shown
}
