import QtQuick
import Varnel

// What popups lie on: a sheet with a hairline and a soft edge below it.
Item {
    Rectangle {
        anchors.fill: parent
        anchors.bottomMargin: -Theme.px(3)
        anchors.leftMargin: -Theme.px(1)
        anchors.rightMargin: -Theme.px(1)
        color: Qt.rgba(0, 0, 0, Theme.dark ? 0.35 : 0.07)
        radius: Theme.bubbleRadius + Theme.px(1)
    }
    Rectangle {
        anchors.fill: parent
        border.color: Theme.dark ? Theme.hairline : Theme.controlBorder
        border.width: 1
        color: Theme.popup
        radius: Theme.bubbleRadius
    }
}
