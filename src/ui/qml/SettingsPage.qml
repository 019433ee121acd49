import QtQuick
import QtQuick.Templates as T
import Varnel

// A page of the settings: one column that scrolls, and goes along with the keyboard.
Flickable {
    id: page

    required property string title
    default property alias content: column.data

    function show(item: Item) {
        let above = item
        while (above && above !== column)
            above = above.parent
        if (!above)
            return
        const place = item.mapToItem(column, 0, 0, item.width, item.height)
        const top = place.y + column.y - Theme.gutter
        const bottom = place.y + place.height + column.y + Theme.gutter
        if (top < contentY)
            contentY = Math.max(0, top)
        else if (bottom > contentY + height)
            contentY = Math.min(contentHeight - height, bottom - height)
    }

    Accessible.name: title
    Accessible.role: Accessible.Pane
    Window.onActiveFocusItemChanged: show(Window.activeFocusItem)
    boundsBehavior: Flickable.StopAtBounds
    clip: true
    contentHeight: column.height + 2 * Theme.gutter
    interactive: contentHeight > height
    pixelAligned: true
    T.ScrollBar.vertical: PlainScrollBar {
    }

    Column {
        id: column

        spacing: Theme.paragraph
        width: page.width - 2 * Theme.turn
        x: Theme.turn
        y: Theme.gutter
    }
}
