#pragma once

#include "ui/transcript/TranscriptStyle.h"

#include <QPointer>
#include <QQuickPaintedItem>

namespace varnel {

/// The transcript's thin scroll bar: true proportions, draggable, a press on the track jumps there.
class TranscriptScrollBar : public QQuickPaintedItem
{
    Q_OBJECT

public:
    static constexpr qreal thickness = 12;

    explicit TranscriptScrollBar(QQuickItem* parent = nullptr);

    /// The style is not owned.
    void setStyle(const TranscriptStyle* style);
    /// @param top, view, total how far the view is down, its height and that of everything, in any one unit.
    void setRange(qint64 top, qint64 view, qint64 total);
    /// Where the thumb is.
    QRectF thumb() const;

    void paint(QPainter* painter) override;

Q_SIGNALS:
    /// The reader wants the view at this share of the way, 0 to 1.
    void moved(qreal share);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseUngrabEvent() override;
    void hoverEnterEvent(QHoverEvent* event) override;
    void hoverLeaveEvent(QHoverEvent* event) override;

private:
    void drag(qreal y);

    QPointer<const TranscriptStyle> m_style;
    qint64 m_top = 0;
    qint64 m_view = 0;
    qint64 m_total = 0;
    bool m_hovered = false;
    bool m_dragging = false;
    qreal m_grip = 0; ///< where in the thumb it was taken
};

} // namespace varnel
