import QtQuick
import Varnel

// Says that something is under way. It turns in steps, which cost next to nothing to draw, and not at all where
// motion is unwelcome. What is over at once shows nothing.
Icon {
    id: spinner

    // How long it waits before it shows, in milliseconds.
    property int delay: 150
    property bool due: false

    color: Theme.accent
    name: "spinner"
    opacity: due ? 1 : 0
    onVisibleChanged: if (!visible)
        due = false

    Timer {
        interval: spinner.delay
        running: spinner.visible && !spinner.due
        onTriggered: spinner.due = true
    }
    Timer {
        interval: 125
        repeat: true
        running: spinner.visible && spinner.due && !Appearance.reducedMotion
        onTriggered: spinner.rotation = (spinner.rotation + 45) % 360
    }
}
