import QtQuick
import QtQuick.Templates as T
import Varnel

T.ScrollBar {
    id: bar

    // The list itself is what one moves in; its bar would be one more thing without a name.
    Accessible.ignored: true
    implicitHeight: Theme.px(10)
    implicitWidth: Theme.px(10)
    minimumSize: 0.08
    padding: Theme.px(2)
    visible: policy !== T.ScrollBar.AlwaysOff && size < 1

    contentItem: Rectangle {
        color: Theme.text
        implicitHeight: Theme.px(6)
        implicitWidth: Theme.px(6)
        opacity: bar.pressed ? 0.5 : bar.hovered ? 0.35 : 0.18
        radius: width / 2
    }
}
