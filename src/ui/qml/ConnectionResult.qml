import QtQuick
import Varnel

// How the connection stands, in a mark and two lines.
Item {
    id: result

    readonly property string stateText: Link.connected ? qsTr("Connected") : Link.connecting ? qsTr("Checking…") : Link.offline ? qsTr("Offline") : qsTr("Not checked")

    Accessible.description: ConnectionEditor.detail
    Accessible.name: qsTr("%1. %2").arg(stateText).arg(ConnectionEditor.report)
    Accessible.role: Accessible.StatusBar
    // Room for both lines at any time: what stands below is not to move while it is clicked.
    height: Math.max(words.height, Theme.uiLine + Theme.unit + Theme.metadataLine)
    width: parent ? parent.width : 0

    Icon {
        anchors.left: parent.left
        color: Link.connected ? Theme.accent : Link.offline ? Theme.warning : Theme.secondary
        height: Theme.icon
        name: Link.connected ? "check" : Link.offline ? "warning" : "circle"
        visible: !Link.connecting
        width: Theme.icon
    }
    Spinner {
        anchors.left: parent.left
        height: Theme.icon
        delay: 0 // the link has waited already
        visible: Link.connecting
        width: Theme.icon
    }
    Column {
        id: words

        anchors.left: parent.left
        anchors.leftMargin: Theme.px(28)
        anchors.right: parent.right
        spacing: Theme.unit

        PlainText {
            Accessible.ignored: true
            color: Link.offline ? Theme.warning : Theme.text
            font: Theme.uiStrongFont
            text: Link.connecting ? result.stateText : ConnectionEditor.report
            width: parent.width
            wrapMode: Text.Wrap
        }
        SettingsNote {
            Accessible.ignored: true
            text: ConnectionEditor.detail
            visible: text !== ConnectionEditor.report && !Link.connecting
        }
    }
}
