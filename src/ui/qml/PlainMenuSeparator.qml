import QtQuick
import QtQuick.Templates as T
import Varnel

T.MenuSeparator {
    implicitHeight: Theme.gap + 1
    implicitWidth: ListView.view ? ListView.view.width : Theme.px(224)

    contentItem: Item {
        Rectangle {
            anchors.left: parent.left
            anchors.leftMargin: Theme.gap
            anchors.right: parent.right
            anchors.rightMargin: Theme.gap
            anchors.verticalCenter: parent.verticalCenter
            color: Theme.hairline
            height: 1
        }
    }
}
