import QtQuick
import Varnel

// A line to type into with its label in front. What is typed is handed on letter by letter; `finished` says that
// the field was left, and from then on it shows again what became of it.
Item {
    id: setting

    required property string label
    required property string value
    property string hint: ""
    property string placeholder: ""
    property Item trailing: null

    signal edited(text: string)
    signal finished

    function focusField() {
        field.forceActiveFocus(Qt.OtherFocusReason)
    }

    implicitHeight: Theme.control + (hintText.visible ? hintText.height + Theme.unit : 0)
    width: parent ? parent.width : 0

    PlainText {
        Accessible.ignored: true
        anchors.left: parent.left
        anchors.right: field.left
        anchors.rightMargin: Theme.paragraph
        height: Theme.control
        text: setting.label
    }
    PlainField {
        id: field

        Accessible.description: setting.hint
        Accessible.name: setting.label
        anchors.left: parent.left
        anchors.leftMargin: Theme.px(150)
        anchors.right: parent.right
        anchors.rightMargin: setting.trailing ? setting.trailing.width + Theme.gap : 0
        fill: Theme.popup
        maximumLength: 2000
        placeholderText: setting.placeholder
        text: setting.value
        onEditingFinished: {
            setting.finished()
            text = Qt.binding(() => setting.value)
        }
        onTextEdited: setting.edited(text)
    }
    PlainText {
        id: hintText

        Accessible.ignored: true
        anchors.left: field.left
        anchors.right: parent.right
        anchors.top: field.bottom
        anchors.topMargin: Theme.unit
        color: Theme.secondary
        font: Theme.metadataFont
        line: Theme.metadataLine
        text: setting.hint
        visible: text.length > 0
        wrapMode: Text.Wrap
    }
}
