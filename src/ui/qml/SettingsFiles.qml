import QtQuick
import Varnel

// Where everything is kept, and its backups.
SettingsPage {
    Component.onCompleted: BackupListModel.begin()
    title: qsTr("Files")

    PlainText {
        text: BackupListModel.locationText
        width: parent.width
        wrapMode: Text.Wrap
    }
    PlainText {
        Accessible.description: qsTr("The data folder")
        color: Theme.secondary
        elide: Text.ElideMiddle
        font: Theme.codeFont
        text: BackupListModel.folder
        width: parent.width
    }
    Flow {
        spacing: Theme.gap
        width: parent.width

        PlainButton {
            outlined: true
            text: qsTr("Reveal library")
            onClicked: BackupListModel.revealLibrary()
        }
        PlainButton {
            outlined: true
            text: qsTr("Reveal backups")
            onClicked: BackupListModel.revealBackups()
        }
        PlainButton {
            outlined: true
            text: qsTr("Back up now")
            onClicked: AppModel.backUp()
        }
    }
    SettingsNote {
        Accessible.role: Accessible.StatusBar
        text: BackupListModel.report
        visible: text.length > 0
    }
    SettingsHeading {
        text: qsTr("Backups")
    }
    SettingsNote {
        text: BackupListModel.count > 0 ? qsTr("Restoring puts a backup in the place of all conversations and the library. A backup of what is there is made first.") : qsTr("There is no backup yet.")
    }
    Repeater {
        model: BackupListModel

        BackupEntry {
        }
    }
}
