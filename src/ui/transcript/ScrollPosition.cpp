#include "ui/transcript/ScrollPosition.h"

#include <algorithm>
#include <cmath>

namespace varnel {

ScrollPosition::ScrollPosition(TranscriptDocument& document)
    : m_document(document)
{}

void ScrollPosition::setHeight(int height)
{
    m_height = height;
}

qint64 ScrollPosition::maximum() const
{
    return std::max<qint64>(0, m_document.total() - m_height);
}

qint64 ScrollPosition::distanceToEnd() const
{
    return m_document.total() - m_height - m_top;
}

void ScrollPosition::settle()
{
    if (m_document.messageCount() == 0 || m_height <= 0) {
        m_top = 0;
        m_anchor.reset();
        return;
    }
    if (m_share && m_anchor) {
        m_document.layout(*m_anchor);
        m_offset = -std::llround(*m_share * m_document.heightOf(*m_anchor));
    }
    m_share.reset();
    // Every round measures a row that was not, so this ends.
    do {
        if (isFollowing() || !m_anchor)
            m_top = maximum();
        else
            m_top = std::max<qint64>(0, m_document.topOf(*m_anchor) - m_offset);
    } while (measureView());
    takeHold();
}

bool ScrollPosition::measureView()
{
    bool corrected = m_document.measure(m_top, m_top + m_height);
    // The header of a code block that begins above the view is drawn in it nevertheless.
    const std::optional<RowRef> first = m_document.rowAt(m_top);
    if (first && m_document.row(*first).group >= 0) {
        const RowRef start{first->message, m_document.row(*first).groupStart};
        const int estimate = m_document.heightOf(start);
        m_document.layout(start);
        corrected = corrected || m_document.heightOf(start) != estimate;
    }
    return corrected;
}

void ScrollPosition::keepPlace()
{
    if (!m_anchor || isFollowing() || m_share || m_document.heightOf(*m_anchor) <= 0)
        return;
    m_share = static_cast<qreal>(-m_offset) / m_document.heightOf(*m_anchor);
}

/// Remembers the row at the top of the view, which is measured by now.
void ScrollPosition::takeHold()
{
    m_anchor = m_document.rowAt(m_top);
    if (m_anchor)
        m_offset = m_document.topOf(*m_anchor) - m_top;
}

void ScrollPosition::holdOn(RowRef ref)
{
    m_anchor = ref;
    m_offset = m_document.topOf(ref) - m_top;
}

/// Moves the view and measures what comes into it, relative to what was there: rows above that turn out
/// higher than they were thought must not push what the reader looks at.
void ScrollPosition::moveTo(qint64 top)
{
    if (m_document.messageCount() == 0)
        return;
    if (!m_anchor)
        takeHold();
    m_offset += m_top - top;
    settle();
    // A place beyond the end stays only while it was there before: something above it shrank.
    const qint64 highest = std::max(maximum(), std::min(m_top, top));
    if (m_top > highest) {
        m_top = highest;
        takeHold();
        settle();
    }
}

void ScrollPosition::scrollBy(qint64 distance)
{
    const bool followed = isFollowing();
    m_follow.detach();
    if (distance > 0) {
        if (!followed)
            moveTo(std::max(m_top, std::min(m_top + distance, maximum())));
        m_follow.movedTo(static_cast<qreal>(distanceToEnd()) / m_document.column().ratio,
                         m_document.style().zoom);
        settle();
        return;
    }
    moveTo(std::max<qint64>(0, m_top + distance));
}

void ScrollPosition::scrollToShare(qreal share)
{
    m_follow.detach();
    const auto top =
        static_cast<qint64>(std::llround(std::clamp(share, 0.0, 1.0) * static_cast<qreal>(maximum())));
    // A jump: nothing of what was shown has to stay, so the place itself is held.
    m_top = top;
    takeHold();
    settle();
    if (share >= 1)
        jumpToEnd();
}

void ScrollPosition::scrollToBegin()
{
    scrollToShare(0);
    if (maximum() > 0)
        m_follow.detach();
}

void ScrollPosition::jumpToEnd()
{
    m_follow.attach();
    settle();
}

void ScrollPosition::detach()
{
    m_follow.detach();
    if (m_document.messageCount() > 0)
        takeHold();
}

void ScrollPosition::attachAtEnd()
{
    if (distanceToEnd() <= 0)
        m_follow.attach();
}

void ScrollPosition::reveal(RowRef ref, int y, int height)
{
    m_document.layout(ref);
    const qint64 top = m_document.topOf(ref) + y;
    if (top >= m_top && top + height <= m_top + m_height)
        return;
    m_follow.detach();
    const bool isAbove = top < m_top;
    m_anchor = ref;
    m_offset = isAbove ? -y : std::max<qint64>(0, m_height - height) - y;
    settle();
    m_follow.movedTo(static_cast<qreal>(distanceToEnd()) / m_document.column().ratio,
                     m_document.style().zoom);
}

void ScrollPosition::reset()
{
    m_follow.attach();
    m_anchor.reset();
    m_top = 0;
}

void ScrollPosition::removeFrom(int first)
{
    if (m_anchor && m_anchor->message >= first) {
        m_anchor.reset();
        m_follow.attach();
    }
}

} // namespace varnel
