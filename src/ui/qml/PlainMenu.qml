import QtQuick
import QtQuick.Templates as T
import Varnel

T.Menu {
    id: menu

    cascade: false
    font: Theme.uiFont
    implicitHeight: contentItem.implicitHeight + topPadding + bottomPadding
    implicitWidth: Theme.px(232)
    margins: Theme.gap
    padding: Theme.unit

    background: PopupSurface {
    }
    contentItem: ListView {
        clip: true
        implicitHeight: contentHeight
        // In a low window it scrolls.
        interactive: contentHeight > height
        // The menu does that itself and leaves out what separates.
        keyNavigationEnabled: false
        currentIndex: menu.currentIndex
        model: menu.contentModel
    }
    delegate: PlainMenuItem {
    }
}
