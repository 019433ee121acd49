import QtQuick
import Varnel

// Before the first word: a greeting, what will answer, and what one can come with.
Item {
    id: empty

    readonly property bool narrow: wide < Theme.px(500)
    // Four lines do not fit; four words do.
    readonly property bool brief: narrow && height < Theme.px(380)
    readonly property int hintWidth: brief ? Theme.px(140) : narrow ? Math.min(wide, Theme.px(300)) : (wide - Theme.turn) / 2
    readonly property int wide: Math.min(width - 2 * Theme.gutter, Theme.px(560))

    Column {
        anchors.centerIn: parent
        spacing: Theme.px(28)

        Column {
            spacing: Theme.gap
            width: empty.wide

            PlainText {
                Accessible.role: Accessible.Heading
                font: Theme.displayFont
                horizontalAlignment: Text.AlignHCenter
                line: Theme.displayLine
                text: qsTr("What shall we work on?")
                width: parent.width
            }
            PlainText {
                color: Theme.secondary
                horizontalAlignment: Text.AlignHCenter
                text: ComposerState.cloudName.length > 0 ? qsTr("%1 answers, a cloud service: %2").arg(AppModel.selectedModel).arg(ComposerState.cloudName)
                                                         : qsTr("%1 answers, on %2").arg(AppModel.selectedModel).arg(AppModel.hostLabel)
                width: parent.width
            }
        }
        Grid {
            anchors.horizontalCenter: parent.horizontalCenter
            columnSpacing: Theme.turn
            columns: empty.narrow && !empty.brief ? 1 : 2
            rowSpacing: Theme.px(20)
            // The greeting stays where the window is too low for all.
            visible: empty.height > Theme.px(260)

            WorkHint {
                brief: empty.brief
                detail: qsTr("Think aloud, draft, ask, translate")
                drawing: "chat"
                title: qsTr("Chat")
                width: empty.hintWidth
            }
            WorkHint {
                brief: empty.brief
                detail: qsTr("Write, explain and mend programs")
                drawing: "coding"
                title: qsTr("Coding")
                width: empty.hintWidth
            }
            WorkHint {
                brief: empty.brief
                detail: qsTr("Take a hard question step by step")
                drawing: "reasoning"
                title: qsTr("Reasoning")
                width: empty.hintWidth
            }
            WorkHint {
                brief: empty.brief
                detail: qsTr("Look at pictures and documents")
                drawing: "vision"
                title: qsTr("Vision")
                width: empty.hintWidth
            }
        }
    }
}
