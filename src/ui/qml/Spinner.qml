import QtQuick
import Varnel

// Says that something is under way. It turns in steps, which cost next to nothing to draw, and not at all where
// motion is unwelcome.
Icon {
    color: Theme.accent
    name: "spinner"

    Timer {
        interval: 125
        repeat: true
        running: parent.visible && !Appearance.reducedMotion
        onTriggered: parent.rotation = (parent.rotation + 45) % 360
    }
}
