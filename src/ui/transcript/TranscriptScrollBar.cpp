#include "ui/transcript/TranscriptScrollBar.h"

#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

namespace varnel {

TranscriptScrollBar::TranscriptScrollBar(QQuickItem* parent)
    : QQuickPaintedItem(parent)
{
    setAcceptedMouseButtons(Qt::LeftButton);
    setAcceptHoverEvents(true);
    setVisible(false);
}

void TranscriptScrollBar::setStyle(const TranscriptStyle* style)
{
    m_style = style;
    update();
}

void TranscriptScrollBar::setRange(qint64 top, qint64 view, qint64 total)
{
    const QRect before = thumb().toAlignedRect();
    m_top = top;
    m_view = view;
    m_total = total;
    setVisible(total > view);
    if (thumb().toAlignedRect() != before)
        update();
}

QRectF TranscriptScrollBar::thumb() const
{
    const qreal track = height() - 4;
    if (m_total <= m_view || track <= 0)
        return {};
    const qreal length =
        std::min(track, std::max(28.0, track * static_cast<qreal>(m_view) / static_cast<qreal>(m_total)));
    const qreal share =
        std::clamp(static_cast<qreal>(m_top) / static_cast<qreal>(m_total - m_view), 0.0, 1.0);
    const qreal breadth = m_hovered || m_dragging ? 8 : 6;
    return {width() - breadth - 2, 2 + (track - length) * share, breadth, length};
}

void TranscriptScrollBar::paint(QPainter* painter)
{
    if (!m_style)
        return;
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    painter->setBrush(m_hovered || m_dragging ? m_style->border : m_style->hairline());
    const QRectF bar = thumb();
    painter->drawRoundedRect(bar, bar.width() / 2, bar.width() / 2);
}

void TranscriptScrollBar::mousePressEvent(QMouseEvent* event)
{
    const QRectF bar = thumb();
    const qreal y = event->position().y();
    m_grip = y >= bar.top() && y < bar.bottom() ? y - bar.top() : bar.height() / 2;
    m_dragging = true;
    setKeepMouseGrab(true);
    drag(y);
    update();
}

void TranscriptScrollBar::mouseMoveEvent(QMouseEvent* event)
{
    drag(event->position().y());
}

void TranscriptScrollBar::mouseReleaseEvent(QMouseEvent*)
{
    mouseUngrabEvent();
}

void TranscriptScrollBar::mouseUngrabEvent()
{
    m_dragging = false;
    setKeepMouseGrab(false);
    update();
}

void TranscriptScrollBar::hoverEnterEvent(QHoverEvent*)
{
    m_hovered = true;
    update();
}

void TranscriptScrollBar::hoverLeaveEvent(QHoverEvent*)
{
    m_hovered = false;
    update();
}

void TranscriptScrollBar::drag(qreal y)
{
    const qreal room = height() - 4 - thumb().height();
    if (room > 0)
        Q_EMIT moved(std::clamp((y - m_grip - 2) / room, 0.0, 1.0));
}

} // namespace varnel
