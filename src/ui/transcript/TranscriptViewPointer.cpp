// Wheel, mouse, touch: scrolling, hovering, selecting.
#include "ui/transcript/TranscriptView.h"

#include <QCursor>
#include <QGuiApplication>
#include <QHoverEvent>
#include <QMouseEvent>
#include <QStyleHints>
#include <QTouchEvent>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace varnel {
namespace {

constexpr qreal wheelStep = 72;       ///< logical pixels at zoom 1 for one notch
constexpr qreal glideFriction = 0.95; ///< of the speed is left after each frame
constexpr qreal glideEnd = 0.02;      ///< logical pixels a millisecond

} // namespace

std::optional<TranscriptView::Hit> TranscriptView::hitAt(QPointF point)
{
    const std::vector<PlacedRow> rows = rowsInView();
    // What is drawn last lies on top.
    for (auto placed = rows.rbegin(); placed != rows.rend(); ++placed) {
        const RowLayout& layout = m_document->layout(placed->ref);
        const QPointF inside = point - QPointF(0, placed->y);
        if (inside.y() < 0 || inside.y() >= layout.height())
            continue;
        Hit hit{*placed, inside, std::nullopt};
        const std::vector<RowTarget> targets = layout.targets();
        for (std::size_t i = 0; i < targets.size(); ++i) {
            for (const QRectF& rect : targets[i].rects) {
                if (rect.contains(inside))
                    hit.target = TargetRef{placed->ref, static_cast<int>(i)};
            }
        }
        return hit;
    }
    return std::nullopt;
}

/// The place in the text nearest to a point, also outside of the view.
TextPosition TranscriptView::textAt(QPointF point)
{
    const std::vector<PlacedRow> rows = rowsInView();
    TextPosition position;
    for (const PlacedRow& placed : rows) {
        if (placed.isSticky || (placed.y > point.y() && placed.ref != rows.front().ref))
            continue;
        position.row = placed.ref;
        const RowLayout& layout = m_document->layout(placed.ref);
        // Past its end a row is selected whole, whatever stands below it.
        position.offset = point.y() >= placed.y + layout.height()
                              ? static_cast<int>(m_document->row(placed.ref).plainText().size())
                              : layout.positionAt(point - QPointF(0, placed.y));
    }
    return position;
}

void TranscriptView::scrollPixels(qreal distance)
{
    bringUpToDate();
    // Fractions of a device pixel are kept for the next event, or a slow wheel would stand still.
    m_wheelRest += distance * ratio();
    const auto whole = static_cast<qint64>(std::trunc(m_wheelRest));
    m_wheelRest -= static_cast<qreal>(whole);
    if (distance < 0)
        m_position->detach();
    if (whole != 0)
        m_position->scrollBy(whole);
    afterMove(true);
}

/// Scrolls the code block or table under a point; false if there is none that could.
bool TranscriptView::scrollSideways(QPointF point, qreal distance)
{
    const auto hit = hitAt(point);
    if (!hit)
        return false;
    GroupState* const group = m_document->group(hit->row.ref);
    const qreal range = m_document->layout(hit->row.ref).scrollRange();
    if (!group || range <= 0)
        return false;
    group->scroll = std::clamp(group->scroll + distance, 0.0, range);
    repaintAll();
    return true;
}

void TranscriptView::wheelEvent(QWheelEvent* event)
{
    if (event->modifiers() & Qt::ControlModifier) {
        event->ignore(); // zooming is the window's
        return;
    }
    m_glideTimer.stop();
    QPointF distance = event->pixelDelta();
    if (distance.isNull())
        distance = QPointF(event->angleDelta()) / 120 * m_style->px(wheelStep);
    if (event->modifiers() & Qt::ShiftModifier && distance.x() == 0)
        distance = distance.transposed();
    event->accept();
    if (std::abs(distance.x()) > std::abs(distance.y())) {
        scrollSideways(event->position(), -distance.x());
        return;
    }
    scrollPixels(-distance.y());
    hover(event->position());
}

void TranscriptView::hover(QPointF point)
{
    const auto hit = hitAt(point);
    TranscriptAttention attention = m_attention;
    attention.hovered = hit ? hit->target : std::nullopt;
    attention.activeMessage = hit ? hit->row.ref.message : -1;
    attention.hintRow.reset();
    if (hit && !hit->target && m_document->layout(hit->row.ref).hintArea().contains(hit->point))
        attention.hintRow = hit->row.ref;
    if (hit && hit->target)
        setCursor(Qt::PointingHandCursor);
    else if (hit && m_document->layout(hit->row.ref).isText(hit->point))
        setCursor(Qt::IBeamCursor);
    else
        unsetCursor();
    if (attention.hovered == m_attention.hovered && attention.activeMessage == m_attention.activeMessage &&
        attention.hintRow == m_attention.hintRow)
        return;
    m_attention = attention;
    repaintAll();
    Q_EMIT hoveredChanged();
}

void TranscriptView::hoverMoveEvent(QHoverEvent* event)
{
    hover(event->position());
}

void TranscriptView::hoverLeaveEvent(QHoverEvent*)
{
    m_attention.hovered.reset();
    m_attention.hintRow.reset();
    m_attention.activeMessage = -1;
    unsetCursor();
    repaintAll();
    Q_EMIT hoveredChanged();
}

void TranscriptView::mousePressEvent(QMouseEvent* event)
{
    forceActiveFocus(Qt::MouseFocusReason);
    m_glideTimer.stop();
    setKeepMouseGrab(true);
    m_pressPoint = m_pointer = event->position();
    const auto hit = hitAt(m_pressPoint);
    m_pressed = hit ? hit->target : std::nullopt;
    m_selecting = hit && (!m_pressed || targetAt(*m_pressed)->kind == TargetKind::Link);
    if (!m_selecting)
        return;
    using Unit = TranscriptSelection::Unit;
    const qint64 sinceDouble = static_cast<qint64>(event->timestamp()) - m_doubleClickTime;
    const bool isThird =
        sinceDouble >= 0 && sinceDouble < QGuiApplication::styleHints()->mouseDoubleClickInterval();
    if (event->modifiers() & Qt::ShiftModifier && hasSelection())
        m_selection.extend(*m_document, textAt(m_pressPoint));
    else
        m_selection.start(*m_document, textAt(m_pressPoint), isThird ? Unit::Paragraph : Unit::Character);
    selectionMoved();
}

void TranscriptView::mouseDoubleClickEvent(QMouseEvent* event)
{
    m_pressPoint = m_pointer = event->position();
    const auto hit = hitAt(m_pressPoint);
    m_pressed = hit ? hit->target : std::nullopt;
    m_selecting = hit && !m_pressed;
    if (!m_selecting)
        return;
    m_doubleClickTime = static_cast<qint64>(event->timestamp());
    m_selection.start(*m_document, textAt(m_pressPoint), TranscriptSelection::Unit::Word);
    selectionMoved();
}

void TranscriptView::mouseMoveEvent(QMouseEvent* event)
{
    m_pointer = event->position();
    const qreal distance = (m_pointer - m_pressPoint).manhattanLength();
    if (distance >= QGuiApplication::styleHints()->startDragDistance())
        m_pressed.reset(); // no click any more, also when it comes back
    if (!m_selecting || m_pressed)
        return;
    selectTo(m_pointer);
    const bool outside = m_pointer.y() < 0 || m_pointer.y() > height();
    if (outside && !m_selectScrollTimer.isActive())
        m_selectScrollTimer.start();
    else if (!outside)
        m_selectScrollTimer.stop();
}

void TranscriptView::selectTo(QPointF point)
{
    m_selection.extend(*m_document, textAt(point));
    selectionMoved();
}

void TranscriptView::selectionMoved()
{
    if (hasSelection()) {
        m_position->detach();
        afterMove(true);
    }
    repaintAll();
    Q_EMIT selectionChanged();
}

void TranscriptView::scrollWhileSelecting()
{
    const qreal beyond = m_pointer.y() < 0 ? m_pointer.y() : std::max(0.0, m_pointer.y() - height());
    scrollPixels(std::clamp(beyond / 4, -40.0, 40.0));
    selectTo(m_pointer);
}

void TranscriptView::mouseReleaseEvent(QMouseEvent* event)
{
    const std::optional<TargetRef> pressed = std::exchange(m_pressed, std::nullopt);
    mouseUngrabEvent();
    const auto hit = hitAt(event->position());
    if (pressed && hit && hit->target == pressed)
        activate(*pressed);
}

void TranscriptView::mouseUngrabEvent()
{
    m_selecting = false;
    m_pressed.reset();
    m_selectScrollTimer.stop();
    setKeepMouseGrab(false);
}

void TranscriptView::touchEvent(QTouchEvent* event)
{
    if (event->pointCount() != 1) {
        event->ignore();
        return;
    }
    const QEventPoint& point = event->point(0);
    event->accept();
    const qint64 time = static_cast<qint64>(event->timestamp());
    if (point.state() == QEventPoint::Pressed) {
        m_glideTimer.stop();
        m_velocity = 0;
        m_pressPoint = point.position();
    } else if (point.state() == QEventPoint::Updated) {
        const QPointF moved = m_touchPoint - point.position();
        if (std::abs(moved.x()) <= std::abs(moved.y()) || !scrollSideways(point.position(), moved.x()))
            scrollPixels(moved.y());
        if (time > m_touchTime)
            m_velocity = 0.6 * m_velocity + 0.4 * moved.y() / static_cast<qreal>(time - m_touchTime);
    } else if (point.state() == QEventPoint::Released) {
        const auto hit = hitAt(point.position());
        const bool isTap = (point.position() - m_pressPoint).manhattanLength() <
                           QGuiApplication::styleHints()->startDragDistance();
        if (isTap && hit && hit->target)
            activate(*hit->target);
        else if (std::abs(m_velocity) > glideEnd)
            m_glideTimer.start();
    }
    m_touchPoint = point.position();
    m_touchTime = time;
}

/// What is left of a flick of the finger.
void TranscriptView::glide()
{
    scrollPixels(m_velocity * m_glideTimer.interval());
    m_velocity *= glideFriction;
    if (std::abs(m_velocity) < glideEnd)
        m_glideTimer.stop();
}

} // namespace varnel
