import QtQuick
import QtQuick.Templates as T
import Varnel

// Names a page of the settings.
T.AbstractButton {
    id: tab

    required property int page
    property int current: -1

    signal chosen(page: int)

    Accessible.name: text
    Accessible.role: Accessible.PageTab
    Accessible.selected: checked
    Accessible.onPressAction: if (enabled)
        clicked()
    checked: page === current
    focusPolicy: Qt.StrongFocus
    implicitHeight: Theme.control
    width: parent ? parent.width : 0
    Keys.onDownPressed: nextItemInFocusChain(true).forceActiveFocus(Qt.TabFocusReason)
    Keys.onEnterPressed: chosen(page)
    Keys.onReturnPressed: chosen(page)
    Keys.onUpPressed: nextItemInFocusChain(false).forceActiveFocus(Qt.BacktabFocusReason)
    onClicked: chosen(page)

    background: Rectangle {
        color: tab.checked ? Theme.chosen : tab.hovered ? Theme.hover : "transparent"
        radius: Theme.radius

        FocusRing {
            shown: tab.visualFocus
        }
    }
    PlainText {
        Accessible.ignored: true
        anchors.fill: parent
        font: tab.checked ? Theme.uiStrongFont : Theme.uiFont
        leftPadding: Theme.paragraph
        rightPadding: Theme.gap
        text: tab.text
    }
}
