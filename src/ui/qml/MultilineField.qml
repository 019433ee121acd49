import QtQuick
import QtQuick.Templates as T
import Varnel

// Some lines to type into, in a frame that scrolls.
FocusScope {
    id: field

    required property string label
    property alias text: area.text
    property alias readOnly: area.readOnly

    signal edited

    Rectangle {
        anchors.fill: parent
        border.color: area.activeFocus ? Theme.accent : Theme.controlBorder
        border.width: area.activeFocus ? Theme.ringWidth : 1
        color: Theme.popup
        radius: Theme.radius
    }
    Flickable {
        id: scroll

        anchors.fill: parent
        anchors.margins: Theme.ringWidth
        boundsBehavior: Flickable.StopAtBounds
        clip: true
        contentHeight: area.height

        T.ScrollBar.vertical: PlainScrollBar {
        }
        T.TextArea {
            id: area

            Accessible.name: field.label
            Accessible.role: Accessible.EditableText
            color: Theme.text
            focus: true
            font: Theme.uiFont
            height: Math.max(implicitHeight, scroll.height)
            implicitHeight: contentHeight + topPadding + bottomPadding
            padding: Theme.gap
            selectByMouse: true
            selectedTextColor: Theme.text
            selectionColor: Theme.selection
            textFormat: TextEdit.PlainText
            width: scroll.width
            wrapMode: TextEdit.Wrap
            // A tab is for going on, not for the text.
            Keys.onBacktabPressed: nextItemInFocusChain(false).forceActiveFocus(Qt.BacktabFocusReason)
            Keys.onTabPressed: nextItemInFocusChain(true).forceActiveFocus(Qt.TabFocusReason)
            onActiveFocusChanged: if (!activeFocus)
                field.edited()
            onCursorRectangleChanged: {
                if (cursorRectangle.y < scroll.contentY)
                    scroll.contentY = Math.max(0, cursorRectangle.y - Theme.gap)
                else if (cursorRectangle.y + cursorRectangle.height > scroll.contentY + scroll.height)
                    scroll.contentY = cursorRectangle.y + cursorRectangle.height - scroll.height + Theme.gap
            }

            PlainText {
                Accessible.ignored: true
                anchors.left: parent.left
                anchors.margins: Theme.gap
                anchors.top: parent.top
                color: Theme.secondary
                text: field.label
                visible: area.length === 0 && area.preeditText.length === 0
            }
        }
    }
}
