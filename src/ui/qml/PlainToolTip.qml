import QtQuick
import QtQuick.Templates as T
import Varnel

T.ToolTip {
    id: tip

    bottomPadding: Theme.unit
    closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutsideParent | T.Popup.CloseOnReleaseOutsideParent
    delay: 600
    font: Theme.metadataFont
    implicitHeight: contentItem.implicitHeight + topPadding + bottomPadding
    implicitWidth: contentItem.implicitWidth + leftPadding + rightPadding
    leftPadding: Theme.gap
    margins: Theme.gap
    rightPadding: Theme.gap
    topPadding: Theme.unit
    x: parent ? (parent.width - implicitWidth) / 2 : 0
    y: -implicitHeight - Theme.unit

    background: Rectangle {
        color: Theme.text
        radius: Theme.px(6)
    }
    contentItem: PlainText {
        color: Theme.background
        font: tip.font
        line: Theme.metadataLine
        text: tip.text
    }
}
