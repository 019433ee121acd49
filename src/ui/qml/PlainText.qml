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
    // Not by the letters of the text: a list keeps one edge, the other one where the layout is mirrored.
    horizontalAlignment: Text.AlignLeft
    lineHeight: line
    lineHeightMode: Text.FixedHeight
    textFormat: Text.PlainText
    verticalAlignment: Text.AlignVCenter
}
