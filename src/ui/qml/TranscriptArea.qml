import QtQuick
import Varnel

// What was said, and the way back to its end.
FocusScope {
    id: area

    readonly property TranscriptView transcript: view

    // A search led to a message: what was found there is marked.
    signal hitShown

    function jumpToLatest() {
        view.jumpToLatest()
    }

    TranscriptView {
        id: view

        Accessible.name: qsTr("Conversation")
        Accessible.role: Accessible.List
        activeFocusOnTab: true
        anchors.fill: parent
        focus: true
        model: TranscriptFeed.model
        style: TranscriptStyle {
            readonly property bool dark: Theme.dark

            bodyFamily: Appearance.uiFamily
            codeFamily: Appearance.codeFamily
            mirrored: Appearance.rightToLeft
            zoom: Appearance.zoom
            Component.onCompleted: useTheme(dark)
            onDarkChanged: useTheme(dark)
        }
        onActionRequested: (id, action, place) => {
            menu.place = place
            TranscriptFeed.act(id, action)
        }
        onLinkActivated: url => Qt.openUrlExternally(url)
        onLogsRequested: TranscriptFeed.openLogs()
        onSearchOffRequested: TranscriptFeed.turnSearchOffAndTryAgain()
        onTemperatureResetRequested: TranscriptFeed.resetTemperatureAndTryAgain()
        onTryAgainRequested: id => TranscriptFeed.tryAgain(id)
        onWriteRequested: (id, path) => TranscriptFeed.writeFile(id, path)
    }
    // A line that runs out of the view fades instead of being cut.
    Rectangle {
        anchors.bottom: parent.bottom
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.rightMargin: Theme.paragraph
        height: Theme.gutter

        gradient: Gradient {
            GradientStop {
                color: Qt.rgba(Theme.background.r, Theme.background.g, Theme.background.b, 0)
                position: 0
            }
            GradientStop {
                color: Theme.background
                position: 1
            }
        }
    }
    // What a link really leads to, before it is followed.
    PlainToolTip {
        delay: 0
        parent: area
        text: view.hoveredLink
        visible: view.hoveredLink.length > 0
        width: Math.min(implicitWidth, area.width - 2 * Theme.gap)
        x: Theme.gap
        y: area.height - height - Theme.gap
    }
    PlainToolTip {
        parent: area
        text: view.hoveredName
        visible: view.hoveredName.length > 0
        x: view.hoveredRect.x + (view.hoveredRect.width - width) / 2
        y: view.hoveredRect.y - height - Theme.unit
    }
    PlainButton {
        id: latest

        anchors.bottom: parent.bottom
        anchors.bottomMargin: Theme.gap
        anchors.horizontalCenter: parent.horizontalCenter
        iconName: "down"
        raised: true
        text: view.unseenBelow > 0 ? qsTr("Jump to latest (%1 new)").arg(view.unseenBelow) : qsTr("Jump to latest")
        visible: !view.following
        onClicked: view.jumpToLatest()
    }
    EditUndoBar {
        anchors.bottom: latest.visible ? latest.top : parent.bottom
        anchors.bottomMargin: Theme.gap
        anchors.horizontalCenter: parent.horizontalCenter
    }
    MessageMenu {
        id: menu

        onClosed: view.forceActiveFocus(Qt.PopupFocusReason)
    }
    Connections {
        function onMoreRequested(id: string) {
            menu.openFor(id, view)
        }
        function onSaveRequested(id: string) {
            ExportFlow.saveMessage(id)
        }

        target: TranscriptFeed
    }
    Connections {
        function onHitOpened(message: string, text: string) {
            view.showMatch(message, text)
            area.hitShown()
        }

        target: ConversationListModel
    }
    Connections {
        function onIsStreamingChanged() {
            if (AppModel.isStreaming)
                view.jumpToLatest()
        }

        target: AppModel
    }
}
