#include "ui/ShareRing.h"

#include <QPainter>

#include <algorithm>

namespace varnel {

ShareRing::ShareRing(QQuickItem* parent)
    : QQuickPaintedItem(parent)
{
    setAntialiasing(true);
}

void ShareRing::setShare(double share)
{
    // Smaller steps cannot be seen, and every one is drawn anew.
    const double shown = std::round(std::clamp(share, 0.0, 1.0) * 200) / 200;
    if (shown == m_share)
        return;
    m_share = shown;
    Q_EMIT changed();
    update();
}

void ShareRing::setColor(const QColor& color)
{
    if (color == m_color)
        return;
    m_color = color;
    Q_EMIT changed();
    update();
}

void ShareRing::setTrack(const QColor& track)
{
    if (track == m_track)
        return;
    m_track = track;
    Q_EMIT changed();
    update();
}

void ShareRing::paint(QPainter* painter)
{
    const double size = std::min(width(), height());
    const double line = size / 7;
    const QRectF circle((width() - size + line) / 2, (height() - size + line) / 2, size - line, size - line);
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(QPen(m_track, line));
    painter->drawEllipse(circle);
    // Angles are sixteenths of a degree, anticlockwise from three o'clock.
    painter->setPen(QPen(m_color, line, Qt::SolidLine, Qt::FlatCap));
    painter->drawArc(circle, 90 * 16, -static_cast<int>(m_share * 360 * 16));
}

} // namespace varnel
