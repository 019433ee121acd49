import QtQuick
import QtQuick.Templates as T
import Varnel

ListView {
    id: list

    // Whether the arrows have moved to a model, and which that was before the list changed.
    property bool stepped: false
    property string kept: ""

    function step(by: int) {
        currentIndex = Math.max(0, Math.min(count - 1, currentIndex + by))
        stepped = true
    }
    // Points at the model that answers.
    function pointAnew() {
        currentIndex = Math.max(0, ModelListModel.currentRow)
        stepped = false
    }

    Accessible.name: qsTr("Models")
    Accessible.role: Accessible.List
    boundsBehavior: Flickable.StopAtBounds
    // Nothing is made ahead of being seen: the filter would have it thrown away half made.
    cacheBuffer: 0
    clip: true
    highlightMoveDuration: 0
    keyNavigationEnabled: false
    model: ModelListModel
    pixelAligned: true
    // A list that changes while it is open keeps pointing at the same model.
    onCountChanged: {
        const row = kept.length > 0 ? ModelListModel.rowOfKey(kept) : -1
        if (row >= 0)
            currentIndex = row
        else
            pointAnew()
    }

    section.delegate: PlainText {
        required property string section

        color: Theme.secondary
        font: Theme.metadataFont
        height: Theme.px(28)
        leftPadding: Theme.gap
        line: Theme.metadataLine
        text: section
        width: ListView.view.width
    }
    section.property: "group"
    delegate: ModelDelegate {
    }

    Connections {
        function onModelAboutToBeReset() {
            list.kept = list.stepped ? ModelListModel.keyAt(list.currentIndex) : ""
        }

        target: ModelListModel
    }

    PlainScrollBar {
        anchors.bottom: parent.bottom
        anchors.right: parent.right
        anchors.top: parent.top
        orientation: Qt.Vertical
        policy: list.contentHeight > list.height ? T.ScrollBar.AsNeeded : T.ScrollBar.AlwaysOff
        position: list.visibleArea.yPosition
        size: list.visibleArea.heightRatio
        onPositionChanged: if (pressed)
            list.contentY = list.originY + position * list.contentHeight
    }
}
