import QtQuick
import QtQuick.Templates as T
import Varnel

// The choice of the model that answers: typed, or gone through with the arrows.
T.Popup {
    id: picker

    closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutsideParent
    focus: true
    height: Math.min(Theme.px(380), filter.height + Math.max(list.contentHeight, Theme.px(72)) + Theme.px(36))
    margins: Theme.gap
    padding: Theme.gap
    width: Theme.px(400)
    x: 0
    y: -height - Theme.gap
    onAboutToShow: {
        filter.clear()
        list.pointAnew()
        ModelListModel.look()
    }
    onOpened: filter.forceActiveFocus(Qt.PopupFocusReason)

    background: PopupSurface {
    }
    Item {
        anchors.fill: parent
        Accessible.name: qsTr("Send with")
        Accessible.role: Accessible.Dialog

        PlainField {
            id: filter

            anchors.left: parent.left
            anchors.right: parent.right
            fill: Theme.popup
            iconName: "search"
            placeholderText: qsTr("Find a model")
            Keys.onDownPressed: list.step(1)
            Keys.onEnterPressed: ModelListModel.choose(list.currentIndex)
            Keys.onReturnPressed: ModelListModel.choose(list.currentIndex)
            Keys.onUpPressed: list.step(-1)
            onTextChanged: {
                ModelListModel.filter = text
                list.pointAnew()
            }
        }
        ModelList {
            id: list

            anchors.bottom: parent.bottom
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.top: filter.bottom
            anchors.topMargin: Theme.gap
        }
        PlainText {
            anchors.centerIn: list
            color: Theme.secondary
            horizontalAlignment: Text.AlignHCenter
            text: ModelListModel.installed > 0 ? qsTr("No model has this in its name") : Link.connected
                                                 ? qsTr("The server has no models yet")
                                                 : qsTr("The server has not told which models it has")
            visible: ModelListModel.count === 0
            width: list.width
            wrapMode: Text.Wrap
        }
    }

    Connections {
        function onChosen() {
            picker.close()
        }

        target: ModelListModel
    }
}
