import QtQuick
import QtQuick.Templates as T
import Varnel

// A value between two ends.
T.Slider {
    id: slider

    focusPolicy: Qt.StrongFocus
    implicitHeight: Theme.control
    implicitWidth: Theme.px(160)
    padding: Theme.unit

    background: Rectangle {
        color: Theme.hairline
        height: Theme.unit
        radius: height / 2
        width: slider.availableWidth
        x: slider.leftPadding
        y: slider.topPadding + (slider.availableHeight - height) / 2

        Rectangle {
            anchors.left: parent.left
            color: Theme.accent
            height: parent.height
            radius: height / 2
            width: slider.position * parent.width
        }
    }
    handle: Rectangle {
        border.color: Theme.accent
        border.width: Theme.ringWidth
        color: Theme.popup
        height: width
        radius: width / 2
        width: Theme.gutter
        x: slider.leftPadding + slider.visualPosition * (slider.availableWidth - width)
        y: slider.topPadding + (slider.availableHeight - height) / 2

        FocusRing {
            radius: width / 2
            shown: slider.visualFocus
        }
    }
}
