import QtQuick
import Varnel

// Stands over what belongs together.
PlainText {
    Accessible.role: Accessible.Heading
    font: Theme.uiStrongFont
    topPadding: Theme.gap
    width: parent ? parent.width : 0
}
