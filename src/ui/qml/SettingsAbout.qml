import QtQuick
import Varnel

// What this program is and what it is made of.
SettingsPage {
    id: page

    readonly property list<LicenceEntry> entries: [
        LicenceEntry { library: qsTr("Qt %1").arg(PreferenceEditor.qtVersion); licence: "LGPL-3.0"; purpose: qsTr("the window and its event loop") },
        LicenceEntry { library: "libcurl"; licence: "curl"; purpose: qsTr("talking to servers") },
        LicenceEntry { library: "simdjson"; licence: "Apache-2.0"; purpose: qsTr("reading JSON") },
        LicenceEntry { library: "MD4C"; licence: "MIT"; purpose: qsTr("reading Markdown") },
        LicenceEntry { library: "libsecret"; licence: "LGPL-2.1"; purpose: qsTr("keeping keys in the keyring") },
        LicenceEntry { library: "EB Garamond"; licence: "OFL-1.1"; purpose: qsTr("the face of the greeting") }
    ]

    title: qsTr("About")

    PlainText {
        Accessible.role: Accessible.Heading
        font: Theme.displayFont
        line: Theme.displayLine
        text: "Varnel"
        width: parent.width
    }
    PlainText {
        text: qsTr("Version %1").arg(PreferenceEditor.version)
        width: parent.width
    }
    SettingsNote {
        text: qsTr("A desktop chat client for large language models served by Ollama.")
    }
    SettingsHeading {
        text: qsTr("Libraries and their licences")
    }
    Repeater {
        model: page.entries

        Item {
            id: entry

            required property LicenceEntry modelData

            Accessible.name: qsTr("%1, %2, %3").arg(modelData.library).arg(modelData.licence).arg(modelData.purpose)
            Accessible.role: Accessible.StaticText
            height: Theme.uiLine
            width: parent ? parent.width : 0

            PlainText {
                Accessible.ignored: true
                anchors.left: parent.left
                text: entry.modelData.library
                width: Theme.px(150) - Theme.gap
            }
            PlainText {
                Accessible.ignored: true
                anchors.left: parent.left
                anchors.leftMargin: Theme.px(150)
                color: Theme.secondary
                text: entry.modelData.licence
                width: Theme.px(110) - Theme.gap
            }
            PlainText {
                Accessible.ignored: true
                anchors.left: parent.left
                anchors.leftMargin: Theme.px(260)
                anchors.right: parent.right
                color: Theme.secondary
                text: entry.modelData.purpose
            }
        }
    }
    SettingsNote {
        text: qsTr("The whole texts of the licences come with the packages of the libraries.")
        topPadding: Theme.gap
    }
}
