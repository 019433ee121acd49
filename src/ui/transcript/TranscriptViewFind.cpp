// Finding in the conversation that is shown.
#include "ui/transcript/TranscriptView.h"

#include <cmath>

namespace varnel {
namespace {

using namespace std::chrono_literals;

constexpr auto findSlice = 6ms;
constexpr qreal findMargin = 72; ///< logical pixels at zoom 1 that stay free above and below what was found
constexpr qsizetype longestFindText = 500;

} // namespace

QString TranscriptView::findText() const
{
    return m_finder->text();
}

int TranscriptView::findCount() const
{
    return m_finder->count();
}

int TranscriptView::findNumber() const
{
    return m_finder->number();
}

bool TranscriptView::isFinding() const
{
    return !m_finder->isDone();
}

void TranscriptView::setFindText(const QString& text)
{
    if (text == m_finder->text())
        return;
    bringUpToDate();
    // While a word is being typed the search stays where its beginning was found.
    const int from = m_finder->current() ? m_finder->current()->row.message
                                         : std::max(0, m_document->messageAt(m_position->top()));
    m_showsFound = -1;
    startFinding(text, from);
}

void TranscriptView::startFinding(const QString& text, int from)
{
    m_finder->start(text.left(longestFindText), from);
    m_seeksFirst = m_finder->isActive();
    continueFinding();
    repaintAll();
}

/// A part of the work at a time, so that typing and scrolling go on.
void TranscriptView::continueFinding()
{
    const bool goesOn = m_finder->goOn(std::chrono::steady_clock::now() + findSlice);
    if (m_seeksFirst && m_finder->count() > 0) {
        m_seeksFirst = false;
        m_finder->step(true);
        // A jump to a message stays there if its words are found elsewhere only.
        if (m_showsFound < 0 || m_finder->current()->row.message == m_showsFound)
            revealFound();
    }
    if (goesOn)
        m_findTimer.start();
    else
        m_seeksFirst = false;
    repaintAll();
    Q_EMIT findChanged();
}

void TranscriptView::findNext()
{
    stepFound(true);
}

void TranscriptView::findPrevious()
{
    stepFound(false);
}

void TranscriptView::stepFound(bool forward)
{
    bringUpToDate();
    m_finder->step(forward);
    revealFound();
    Q_EMIT findChanged();
}

void TranscriptView::revealFound()
{
    const std::optional<FoundText> found = m_finder->current();
    if (!found)
        return;
    const RowLayout& layout = m_document->layout(found->row);
    const QList<QRectF> rects = layout.rectsOf(found->start, found->length);
    if (rects.isEmpty())
        return;
    m_glideTimer.stop();
    m_position->detach();
    const QRectF area = layout.scrollArea();
    if (GroupState* const group = m_document->group(found->row); group && !area.isEmpty()) {
        // Code and tables that reach beyond their box are moved along.
        const qreal edge = m_style->px(24);
        if (rects.front().right() > area.right() - edge)
            group->scroll += rects.front().right() - area.right() + edge;
        else if (rects.front().left() < area.left() + edge)
            group->scroll -= area.left() + edge - rects.front().left();
        group->scroll = std::clamp(group->scroll, 0.0, layout.scrollRange());
    }
    const qreal margin = std::min(m_style->px(findMargin), height() / 3);
    m_position->reveal(found->row, static_cast<int>(std::floor((rects.front().top() - margin) * ratio())),
                       static_cast<int>(std::ceil((rects.front().height() + 2 * margin) * ratio())));
    afterMove(true);
}

void TranscriptView::showMatch(const QString& id, const QString& text)
{
    const int message = m_document->model().indexOf(id);
    if (message < 0)
        return;
    showMessage(id);
    m_showsFound = message;
    startFinding(text, message);
}

} // namespace varnel
