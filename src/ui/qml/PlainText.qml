import QtQuick
import Varnel

// A label. What it shows may come from anywhere, so it is never taken for markup.
Text {
    property int line: Theme.uiLine

    Accessible.name: text
    Accessible.role: Accessible.StaticText
    color: Theme.text
    elide: Text.ElideRight
    font: Theme.uiFont
    lineHeight: line
    lineHeightMode: Text.FixedHeight
    textFormat: Text.PlainText
    verticalAlignment: Text.AlignVCenter
}
