import QtQuick
import Varnel

// The first steps: where Ollama runs, whether it answers, which model, and keys. Closed in the middle it goes on
// from there when it is opened again; until it is finished or skipped, every start opens it.
Sheet {
    id: sheet

    readonly property int step: Math.max(0, Math.min(titles.length - 1, WindowLayout.firstRunStep))
    readonly property list<string> titles: [qsTr("Where does Ollama run?"), qsTr("Does it answer?"), qsTr("Which model?"), qsTr("Keys, if you like")]

    signal modelsAsked

    function finish() {
        PreferenceEditor.finishFirstRun()
        WindowLayout.firstRunStep = 0
        close()
    }
    function go(to: int) {
        ConnectionEditor.apply()
        WindowLayout.firstRunStep = to
        if (to === 1 && !Link.connected)
            ConnectionEditor.open()
    }

    firstFocus: next
    title: titles[step]
    wantedHeight: 600
    wantedWidth: 640
    onAboutToHide: ConnectionEditor.apply()
    // The test is what this step is for, and after a restart nothing has led to it.
    onAboutToShow: if (step === 1 && !Link.connected)
        ConnectionEditor.open()

    PlainText {
        id: progress

        anchors.left: parent.left
        anchors.leftMargin: Theme.turn
        anchors.right: parent.right
        anchors.rightMargin: Theme.turn
        anchors.top: parent.top
        anchors.topMargin: Theme.paragraph
        color: Theme.secondary
        font: Theme.metadataFont
        text: qsTr("Step %1 of %2").arg(sheet.step + 1).arg(sheet.titles.length)
    }
    Item {
        anchors.bottom: foot.top
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: progress.bottom

        Loader {
            active: sheet.step === 0
            anchors.fill: parent
            sourceComponent: FirstRunPlace {
            }
        }
        Loader {
            active: sheet.step === 1
            anchors.fill: parent
            sourceComponent: FirstRunTest {
            }
        }
        Loader {
            id: models

            active: sheet.step === 2
            anchors.fill: parent
            sourceComponent: FirstRunModel {
            }
        }
        Loader {
            active: sheet.step === 3
            anchors.fill: parent
            sourceComponent: FirstRunKeys {
            }
        }
    }
    Connections {
        function onModelsAsked() {
            sheet.modelsAsked()
        }

        target: models.item as FirstRunModel
    }
    Item {
        id: foot

        anchors.bottom: parent.bottom
        anchors.left: parent.left
        anchors.leftMargin: Theme.turn
        anchors.right: parent.right
        anchors.rightMargin: Theme.turn
        height: Theme.px(60)

        PlainButton {
            anchors.left: parent.left
            anchors.verticalCenter: parent.verticalCenter
            hint: qsTr("Do not ask again; everything is in the settings too")
            text: qsTr("Skip setup")
            onClicked: sheet.finish()
        }
        PlainButton {
            anchors.right: next.left
            anchors.rightMargin: Theme.gap
            anchors.verticalCenter: parent.verticalCenter
            outlined: true
            text: qsTr("Back")
            visible: sheet.step > 0
            onClicked: sheet.go(sheet.step - 1)
        }
        PlainButton {
            id: next

            readonly property bool last: sheet.step === sheet.titles.length - 1

            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            primary: true
            text: last ? qsTr("Start chatting") : sheet.step === 1 && !Link.connected ? qsTr("Go on without") : qsTr("Next")
            onClicked: last ? sheet.finish() : sheet.go(sheet.step + 1)
        }
    }
}
