import QtQuick
import Varnel

// Where Ollama runs, as in the settings.
SettingsPage {
    title: qsTr("Where Ollama runs")

    ConnectionFields {
    }
}
