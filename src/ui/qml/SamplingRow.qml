import QtQuick
import Varnel

// A setting of the sampling panel: what it is called, the way back to what is usual, and below it the control.
Column {
    id: row

    required property string label
    required property string detail
    required property bool usual
    default property alias content: body.data

    signal resetAsked

    spacing: Theme.unit

    Item {
        height: Theme.control
        width: parent.width

        PlainText {
            Accessible.ignored: true
            anchors.left: parent.left
            anchors.verticalCenter: parent.verticalCenter
            font: Theme.uiStrongFont
            text: row.label
        }
        PlainButton {
            Accessible.name: qsTr("Reset %1").arg(row.label)
            anchors.right: parent.right
            enabled: !row.usual
            hint: qsTr("As in a new conversation")
            text: qsTr("Reset")
            onClicked: row.resetAsked()
        }
    }
    Item {
        id: body

        height: childrenRect.height
        width: parent.width
    }
    PlainText {
        Accessible.ignored: true
        color: Theme.secondary
        font: Theme.metadataFont
        line: Theme.metadataLine
        text: row.detail
        width: parent.width
        wrapMode: Text.Wrap
    }
}
