#include "ui/DropTarget.h"

#include <QDragEnterEvent>
#include <QMimeData>

namespace varnel {

DropTarget::DropTarget(QQuickItem* parent)
    : QQuickItem(parent)
{
    setFlag(ItemAcceptsDrops);
}

void DropTarget::dragEnterEvent(QDragEnterEvent* event)
{
    if (!m_intake || !Intake::canTake(*event->mimeData())) {
        event->ignore();
        return;
    }
    // What is dropped is copied: the file stays where it is.
    event->setDropAction(Qt::CopyAction);
    event->accept();
    setHovered(true);
}

void DropTarget::dragMoveEvent(QDragMoveEvent* event)
{
    event->setDropAction(Qt::CopyAction);
    event->accept();
}

void DropTarget::dragLeaveEvent(QDragLeaveEvent* event)
{
    setHovered(false);
    event->accept();
}

void DropTarget::dropEvent(QDropEvent* event)
{
    setHovered(false);
    const bool took =
        m_intake && m_intake->takeDropped(*event->mimeData(), m_folder,
                                          m_attaching ? Intake::Use::Attach : Intake::Use::Keep);
    if (!took) {
        event->ignore();
        return;
    }
    event->setDropAction(Qt::CopyAction);
    event->accept();
    Q_EMIT taken();
}

void DropTarget::setHovered(bool hovered)
{
    if (hovered == m_hovered)
        return;
    m_hovered = hovered;
    Q_EMIT hoveredChanged();
}

} // namespace varnel
