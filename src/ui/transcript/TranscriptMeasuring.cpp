// Measuring rows, and keeping only what is near the view.
#include "ui/transcript/TranscriptDocument.h"

#include <algorithm>

namespace varnel {
namespace {

constexpr int messagesKept = 40;      ///< with their rows, on either side of the view
constexpr int rowsKept = 40;          ///< with their layouts, on either side of the view
constexpr qsizetype reflownRows = 12; ///< a longer table keeps its column widths while it arrives

} // namespace

void TranscriptDocument::setMeasured(RowRef ref, int height)
{
    Heights& heights = m_measures.messages[at(ref.message)];
    if (!heights.measured[at(ref.row)]) {
        heights.measured[at(ref.row)] = true;
        --heights.missing;
    }
    if (heights.rows.setHeight(ref.row, height) != 0)
        setTotal(ref.message);
}

const RowLayout& TranscriptDocument::layout(RowRef ref)
{
    TranscriptRow& row = rows(ref.message).row(ref.row);
    if (!row.layout) {
        row.layout = layOut(row, context(ref.message, row));
        setMeasured(ref, devicePixels(row.layout->height()));
    }
    return *row.layout;
}

bool TranscriptDocument::measure(qint64 from, qint64 to)
{
    bool corrected = false;
    const qint64 before = total();
    std::optional<RowRef> ref = rowAt(from);
    if (!ref)
        return false;
    for (qint64 y = topOf(*ref); ref && y < to; ref = next(*ref)) {
        const int estimate = heightOf(*ref);
        layout(*ref);
        corrected = corrected || heightOf(*ref) != estimate;
        y += heightOf(*ref);
    }
    return corrected || total() != before;
}

/// Measures the missing rows of one message; false if the time ended before that.
bool TranscriptDocument::measureMessage(int message, std::chrono::steady_clock::time_point end)
{
    if (m_measures.messages[at(message)].missing == 0)
        return true;
    const bool wasLoaded = m_messages[at(message)].rows != nullptr;
    MessageRows& held = rows(message);
    Heights& heights = m_measures.messages[at(message)];
    for (int row = 0; row < held.count() && heights.missing > 0; ++row) {
        if (heights.measured[at(row)])
            continue;
        if (std::chrono::steady_clock::now() >= end)
            return false;
        const auto measured = layOut(held.row(row), context(message, held.row(row)));
        setMeasured({message, row}, devicePixels(measured->height()));
    }
    if (!wasLoaded) {
        m_messages[at(message)].rows.reset();
        std::erase(m_loaded, message);
    }
    return true;
}

bool TranscriptDocument::measureOutwards(int message, std::chrono::steady_clock::time_point end)
{
    if (m_messages.empty())
        return false;
    if (m_idleAbove < 0 && m_idleBelow < 0)
        m_idleAbove = m_idleBelow = std::clamp(message, 0, messageCount() - 1);
    while (m_idleAbove >= 0 || m_idleBelow < messageCount()) {
        const bool above = m_idleBelow >= messageCount() ||
                           (m_idleAbove >= 0 && message - m_idleAbove < m_idleBelow - message);
        const int chosen = above ? m_idleAbove : m_idleBelow;
        if (!measureMessage(chosen, end))
            return true;
        if (above)
            --m_idleAbove;
        else
            ++m_idleBelow;
        if (std::chrono::steady_clock::now() >= end)
            return true;
    }
    return false;
}

GroupState* TranscriptDocument::group(RowRef ref)
{
    const int number = row(ref).group;
    return number >= 0 ? &m_messages[at(ref.message)].groups[number] : nullptr;
}

int TranscriptDocument::regroup(RowRef ref)
{
    const TranscriptRow& changed = row(ref);
    const int group = changed.group;
    MessageRows& held = rows(ref.message);
    Heights& heights = m_measures.messages[at(ref.message)];
    int number = changed.groupStart;
    for (; number < held.count() && held.row(number).group == group; ++number) {
        TranscriptRow& part = held.row(number);
        part.layout.reset();
        if (heights.measured[at(number)]) {
            heights.measured[at(number)] = false;
            ++heights.missing;
        }
        heights.rows.setHeight(number, devicePixels(estimatedHeight(part, context(ref.message, part))));
    }
    setTotal(ref.message);
    m_otherWidths.clear();
    m_idleBelow = m_idleBelow < 0 ? m_idleBelow : std::min(m_idleBelow, ref.message);
    return number;
}

bool TranscriptDocument::isThinkingOpen(int message) const
{
    return m_messages[at(message)].thinkingOpen.value_or(false);
}

void TranscriptDocument::setThinkingOpen(int message, bool open)
{
    m_messages[at(message)].thinkingOpen = open;
    rows(message);
    update(message, false);
}

void TranscriptDocument::release(RowRef first, RowRef last)
{
    std::erase_if(m_loaded, [&](int message) {
        MessageRows& held = *m_messages[at(message)].rows;
        const bool isFar = message < first.message - messagesKept || message > last.message + messagesKept;
        if (isFar && !m_model.message(message).streaming) {
            m_messages[at(message)].rows.reset();
            return true;
        }
        for (int row = 0; row < held.count(); ++row) {
            const bool isNear =
                RowRef{message, row + rowsKept} >= first && RowRef{message, row - rowsKept} <= last;
            if (!isNear)
                held.row(row).layout.reset();
        }
        return false;
    });
}

/// Lets the tables that are still arriving choose their column widths anew; all of them once the reply is
/// whole.
int TranscriptDocument::reflowTables(int message, int from)
{
    MessageRows& held = rows(message);
    const bool grows = m_model.message(message).streaming;
    for (int number = grows ? from : 0; number < held.count(); ++number) {
        const TranscriptRow& part = held.row(number);
        if (part.kind != RowKind::Table || (grows && part.table->rows.size() > reflownRows))
            continue;
        const RowRef start{message, part.groupStart};
        from = std::min(from, start.row);
        group(start)->widths.clear();
        number = regroup(start) - 1;
    }
    return from;
}

} // namespace varnel
