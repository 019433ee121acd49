pragma Singleton

import QtQuick
import Varnel

// Every colour, size and typeface of the window. Sizes are given at zoom 1 and pass through px().
QtObject {
    readonly property bool dark: Appearance.dark

    readonly property color background: dark ? "#191A1B" : "#FBFAF8"
    readonly property color sidebar: dark ? "#131415" : "#F2F0EC"
    readonly property color text: dark ? "#ECEAE6" : "#1F1E1C"
    readonly property color secondary: dark ? "#A5A29C" : "#63605A"
    readonly property color bubble: dark ? "#2A2B2D" : "#EBE8E2"
    readonly property color code: dark ? "#111213" : "#F1EFEA"
    readonly property color accent: dark ? "#5CC8B5" : "#0B6B5E"
    readonly property color inkOnAccent: dark ? "#06201C" : "#FFFFFF"
    // The accent where the background has the colour of the text.
    readonly property color accentOnInk: dark ? "#0B6B5E" : "#5CC8B5"
    readonly property color warning: dark ? "#E0B252" : "#8A5A00"
    readonly property color error: dark ? "#F2918A" : "#B3261E"
    readonly property color controlBorder: dark ? "#6E6C68" : "#8C877E"

    // Tints of the text over whatever lies below.
    readonly property color hairline: Qt.rgba(text.r, text.g, text.b, dark ? 0.12 : 0.10)
    readonly property color hover: Qt.rgba(text.r, text.g, text.b, 0.06)
    readonly property color chosen: Qt.rgba(text.r, text.g, text.b, 0.08)
    readonly property color pressed: Qt.rgba(text.r, text.g, text.b, 0.11)
    readonly property color selection: Qt.rgba(accent.r, accent.g, accent.b, dark ? 0.35 : 0.22)
    // What floats above the window.
    readonly property color popup: dark ? "#212224" : "#FFFFFF"

    readonly property font uiFont: Qt.font({ family: Appearance.uiFamily, pixelSize: px(13) })
    readonly property font uiStrongFont: Qt.font({ family: Appearance.uiFamily, pixelSize: px(13), weight: Font.DemiBold })
    readonly property font titleFont: Qt.font({ family: Appearance.uiFamily, pixelSize: px(16), weight: Font.DemiBold })
    readonly property font bodyFont: Qt.font({ family: Appearance.uiFamily, pixelSize: px(15) })
    readonly property font metadataFont: Qt.font({ family: Appearance.uiFamily, pixelSize: px(12) })
    readonly property font codeFont: Qt.font({ family: Appearance.codeFamily, pixelSize: px(13) })
    readonly property font displayFont: Qt.font({ family: Appearance.displayFamily, pixelSize: px(28) })

    readonly property int uiLine: px(18)
    readonly property int bodyLine: px(24)
    readonly property int metadataLine: px(16)
    readonly property int displayLine: px(34)

    readonly property int unit: px(4)
    readonly property int gap: px(8)
    readonly property int paragraph: px(12)
    readonly property int gutter: px(16)
    readonly property int turn: px(24)

    readonly property int control: px(32)
    readonly property int icon: px(20)
    readonly property int header: px(48)
    readonly property int statusLine: px(24)
    readonly property int column: px(720)
    readonly property int wideColumn: px(880)

    readonly property int radius: px(8)
    readonly property int bubbleRadius: px(12)
    readonly property int composerRadius: px(14)

    readonly property int ringWidth: 2
    readonly property int ringOffset: 2

    // How long a change may take to be seen, in milliseconds.
    readonly property int motion: Appearance.reducedMotion ? 0 : 120

    function px(size: real): int {
        return Math.round(size * Appearance.zoom)
    }
}
