import QtQuick
import Varnel

// What is being fetched or removed: a bar, a line, and a way to end it.
Item {
    id: strip

    height: visible ? Theme.px(52) : 0

    Rectangle {
        anchors.left: parent.left
        anchors.right: parent.right
        color: Theme.hairline
        height: 1
    }
    Rectangle {
        id: bar

        readonly property real share: Math.max(0, AppModel.pullShare)

        Accessible.description: LibraryHitList.pullLine
        Accessible.name: qsTr("%1 of %2").arg(Math.floor(share * 100) + " %").arg(AppModel.pullTarget.slice(0, 200))
        Accessible.role: Accessible.ProgressBar
        anchors.left: parent.left
        anchors.right: stop.left
        anchors.rightMargin: Theme.paragraph
        color: Theme.bubble
        height: Theme.px(6)
        radius: height / 2
        visible: AppModel.isPulling
        y: Theme.px(12)

        Rectangle {
            anchors.left: parent.left
            color: Theme.accent
            height: parent.height
            radius: parent.radius
            width: bar.share > 0 ? Math.max(height, bar.share * parent.width) : 0
        }
    }
    PlainText {
        Accessible.role: Accessible.StatusBar
        anchors.left: parent.left
        anchors.right: AppModel.isPulling ? stop.left : parent.right
        anchors.rightMargin: AppModel.isPulling ? Theme.paragraph : 0
        color: Theme.secondary
        font: Theme.metadataFont
        line: Theme.metadataLine
        text: LibraryHitList.pullLine
        y: AppModel.isPulling ? Theme.px(24) : Theme.px(18)
    }
    PlainButton {
        id: stop

        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        hint: qsTr("Stop; what is fetched stays on the server")
        outlined: true
        text: qsTr("Stop")
        visible: AppModel.isPulling
        onClicked: AppModel.stopPull()
    }
}
