import QtQuick
import QtQuick.Templates as T
import Varnel

// How the model is asked in this conversation.
T.Popup {
    id: panel

    readonly property bool isUsual: ConversationSettings.temperatureIsUsual && ConversationSettings.contextLengthIsUsual
                                    && ConversationSettings.keepAliveIsUsual && ConversationSettings.systemPromptIsUsual
    // Context lengths worth having: each twice the one before.
    readonly property real doubling: Math.log2(ConversationSettings.contextLength / 512)

    // Whose settings these are: another conversation may come to the front by itself.
    property var session
    property string shownPrompt: ""

    function keep() {
        if (systemPrompt.text !== shownPrompt)
            ConversationSettings.setSystemPromptOf(session, systemPrompt.text)
        shownPrompt = systemPrompt.text
    }
    function settle() {
        keepAlive.text = ConversationSettings.keepAlive
        systemPrompt.text = ConversationSettings.systemPrompt
        shownPrompt = systemPrompt.text // the field may write some characters in another way
    }

    closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutside
    dim: false
    focus: true
    height: Math.min(column.height + 2 * padding, T.Overlay.overlay ? T.Overlay.overlay.height - 2 * Theme.gap : 0)
    margins: Theme.gap
    modal: true
    padding: Theme.gutter
    width: Theme.px(380)
    y: -height - Theme.unit
    onAboutToHide: keep()
    onAboutToShow: {
        session = AppModel.selectionId()
        settle()
    }
    onOpened: temperature.forceActiveFocus(Qt.PopupFocusReason)

    background: PopupSurface {
    }

    Connections {
        function onSelectionChanged() {
            panel.close()
        }

        target: AppModel
    }
    Flickable {
        Accessible.name: qsTr("Sampling")
        Accessible.role: Accessible.Dialog
        anchors.fill: parent
        boundsBehavior: Flickable.StopAtBounds
        clip: contentHeight > height
        contentHeight: column.height
        interactive: contentHeight > height

        Column {
            id: column

            spacing: Theme.gap
            width: parent.width

            SamplingRow {
                detail: qsTr("%1 of 0 to 2: low is steady, high is varied").arg(ConversationSettings.temperature.toFixed(2))
                label: qsTr("Temperature")
                usual: ConversationSettings.temperatureIsUsual
                width: parent.width
                onResetAsked: ConversationSettings.resetTemperature()

                ValueSlider {
                    id: temperature

                    Accessible.name: qsTr("Temperature")
                    stepSize: 0.05
                    to: 2
                    value: ConversationSettings.temperature
                    width: parent.width
                    onMoved: ConversationSettings.temperature = value
                }
            }
            SamplingRow {
                detail: qsTr("%L1 of 512 to 131,072 tokens that the model sees at once").arg(ConversationSettings.contextLength)
                label: qsTr("Context length")
                usual: ConversationSettings.contextLengthIsUsual
                width: parent.width
                onResetAsked: ConversationSettings.resetContextLength()

                ValueSlider {
                    Accessible.name: qsTr("Context length")
                    stepSize: 0.5
                    to: 8
                    value: panel.doubling
                    width: parent.width
                    onMoved: ConversationSettings.contextLength = Math.round(512 * Math.pow(2, value))
                }
            }
            SamplingRow {
                detail: keepAlive.refused ? qsTr("This is no time: write 30s, 5m or 1h, 0 or -1m")
                                          : qsTr("How long the model stays loaded: 30s, 5m, 1h; 0 is not at all, -1m for ever")
                label: qsTr("Keep-alive")
                usual: ConversationSettings.keepAliveIsUsual
                width: parent.width
                onResetAsked: {
                    ConversationSettings.resetKeepAlive()
                    panel.settle()
                }

                PlainField {
                    id: keepAlive

                    property bool refused: false

                    fill: Theme.popup
                    maximumLength: 30
                    placeholderText: qsTr("Keep-alive")
                    width: parent.width
                    onTextChanged: refused = !ConversationSettings.setKeepAlive(text)
                }
            }
            SamplingRow {
                detail: qsTr("What the model is told before everything else")
                label: qsTr("System prompt")
                usual: ConversationSettings.systemPromptIsUsual
                width: parent.width
                onResetAsked: {
                    ConversationSettings.resetSystemPrompt()
                    panel.settle()
                }

                MultilineField {
                    id: systemPrompt

                    height: Theme.px(96)
                    label: qsTr("System prompt")
                    width: parent.width
                    onEdited: panel.keep()
                }
            }
        }
    }
}
