import QtQuick
import Varnel

// A sentence that explains.
PlainText {
    color: Theme.secondary
    font: Theme.metadataFont
    line: Theme.metadataLine
    width: parent ? parent.width : 0
    wrapMode: Text.Wrap
}
