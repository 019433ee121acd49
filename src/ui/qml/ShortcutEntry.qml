import QtQml
import Varnel

QtObject {
    // As in "Ctrl+Shift+C"; a space between those that belong together.
    required property string keys
    readonly property string text: keys.split(" ").map(key => Appearance.nativeKeys(key)).join(" / ")
    required property string label
}
