#include "ui/transcript/TranscriptDocument.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace varnel {
namespace {

constexpr qreal topPadding = 24;      ///< above the first message
constexpr std::size_t widthsKept = 3; ///< besides the present one

} // namespace

TranscriptDocument::TranscriptDocument(const TranscriptModel& model, const TranscriptStyle& style)
    : m_model(model)
    , m_style(style)
{
    reset();
}

TranscriptDocument::~TranscriptDocument() = default;

int TranscriptDocument::devicePixels(qreal height) const
{
    return static_cast<int>(std::ceil(height * m_column.ratio - 1e-6));
}

void TranscriptDocument::setGeometry(qreal width, qreal ratio)
{
    const auto whole = [ratio](qreal value) { return std::floor(value * ratio) / ratio; };
    RowColumn column;
    column.ratio = ratio;
    column.mirrored = m_style.mirrored;
    const qreal gutter = m_style.px(TranscriptStyle::gutter);
    column.width =
        whole(std::max(160.0, std::min(m_style.px(TranscriptStyle::columnWidth), width - 2 * gutter)));
    column.left = whole(std::max(gutter, (width - column.width) / 2));
    column.wide =
        whole(std::clamp(width - gutter - column.left, column.width, m_style.px(TranscriptStyle::wideWidth)));
    if (column == m_column)
        return;
    const Key before{m_column.width, m_column.wide, m_column.ratio};
    const Key after{column.width, column.wide, column.ratio};
    m_column = column;
    dropLayouts();
    if (before == after)
        return;
    m_otherWidths.emplace_back(before, std::move(m_measures));
    const auto known = std::find_if(m_otherWidths.begin(), m_otherWidths.end(),
                                    [&after](const auto& entry) { return entry.first == after; });
    if (known != m_otherWidths.end()) {
        m_measures = std::move(known->second);
        m_otherWidths.erase(known);
    } else {
        m_measures = {};
    }
    if (m_otherWidths.size() > widthsKept)
        m_otherWidths.erase(m_otherWidths.begin());
    startMeasures();
}

/// Brings the heights in line with the messages: those of messages that changed meanwhile are estimated anew.
void TranscriptDocument::startMeasures()
{
    m_measures.messages.resize(m_messages.size());
    m_measures.totals.clear();
    for (int message = 0; message < messageCount(); ++message) {
        Heights& heights = m_measures.messages[at(message)];
        if (heights.revision != m_messages[at(message)].revision)
            heights = {};
        if (heights.missing >= 0) {
            m_measures.totals.append(static_cast<int>(heights.rows.total()));
            continue;
        }
        m_measures.totals.append(estimateMessage(message));
        if (m_messages[at(message)].rows)
            fillEstimates(message, 0);
    }
    m_idleAbove = m_idleBelow = -1;
    for (Message& message : m_messages) {
        for (auto& [number, group] : message.groups)
            group.widths.clear();
    }
}

void TranscriptDocument::remeasure()
{
    m_otherWidths.clear();
    m_measures = {};
    dropLayouts();
    startMeasures();
}

void TranscriptDocument::redraw()
{
    dropLayouts();
}

void TranscriptDocument::dropLayouts()
{
    for (const int message : m_loaded) {
        MessageRows& rows = *m_messages[at(message)].rows;
        for (int row = 0; row < rows.count(); ++row)
            rows.row(row).layout.reset();
    }
}

void TranscriptDocument::reset()
{
    m_messages.clear();
    m_loaded.clear();
    m_messages.resize(at(m_model.count()));
    remeasure();
}

void TranscriptDocument::append()
{
    m_messages.emplace_back();
    m_measures.messages.emplace_back();
    m_measures.totals.append(estimateMessage(messageCount() - 1));
    m_idleAbove = m_idleBelow = -1;
}

void TranscriptDocument::removeFrom(int first)
{
    m_messages.resize(at(first));
    m_measures.messages.resize(at(first));
    m_measures.totals.truncate(first);
    std::erase_if(m_loaded, [first](int message) { return message >= first; });
    m_otherWidths.clear(); // a message to come may get a number that is known there
    m_idleAbove = m_idleBelow = -1;
}

RowRef TranscriptDocument::update(int message, bool mayReflow)
{
    Message& held = m_messages[at(message)];
    Heights& heights = m_measures.messages[at(message)];
    ++held.revision;
    const bool hasThought = m_model.message(message).thinkingTook.has_value();
    const bool thinkingEnded = std::exchange(held.hasThought, hasThought) != hasThought;
    if (!held.rows || heights.missing < 0) {
        heights = {};
        m_measures.totals.setHeight(message, estimateMessage(message));
        m_idleAbove = m_idleBelow = -1;
        return {message, 0};
    }
    const int first = held.rows->update(m_model.message(message), isThinkingOpen(message));
    fillEstimates(message, first);
    m_idleBelow = m_idleBelow < 0 ? m_idleBelow : std::min(m_idleBelow, message);
    const int changed = mayReflow ? reflowTables(message, first) : first;
    // The row that said "Thinking…" says something else now, in the same place.
    return {message, thinkingEnded ? 0 : changed};
}

/// Estimates the heights of a message's rows from `from` on; those before it stay.
void TranscriptDocument::fillEstimates(int message, int from)
{
    Heights& heights = m_measures.messages[at(message)];
    MessageRows& rows = *m_messages[at(message)].rows;
    heights.revision = m_messages[at(message)].revision;
    for (int row = from; row < static_cast<int>(heights.measured.size()); ++row)
        heights.missing -= heights.measured[at(row)] ? 0 : 1;
    heights.missing = from == 0 ? 0 : std::max(0, heights.missing);
    heights.rows.truncate(from);
    heights.measured.resize(at(from));
    for (int row = from; row < rows.count(); ++row) {
        const RowContext place = context(message, rows.row(row));
        heights.rows.append(devicePixels(estimatedHeight(rows.row(row), place)));
        heights.measured.push_back(isHeightKnown(rows.row(row), place));
        heights.missing += heights.measured.back() ? 0 : 1;
    }
    setTotal(message);
}

void TranscriptDocument::setTotal(int message)
{
    m_measures.totals.setHeight(message, static_cast<int>(m_measures.messages[at(message)].rows.total()));
}

int TranscriptDocument::estimateMessage(int message) const
{
    const TranscriptMessage& contents = m_model.message(message);
    const qreal zoom = m_style.zoom;
    const qreal perLine = std::max(10.0, m_column.width / zoom / 7.5);
    const auto length = static_cast<qreal>(contents.content.size());
    const auto breaks = static_cast<qreal>(contents.content.count(QLatin1Char('\n')));
    const qreal lines = std::ceil(length / perLine) + breaks * 0.5;
    return devicePixels(m_style.px(lines * TranscriptStyle::bodyPitch + 60));
}

MessageRows& TranscriptDocument::rows(int message)
{
    Message& held = m_messages[at(message)];
    if (held.rows)
        return *held.rows;
    held.rows = std::make_unique<MessageRows>();
    held.rows->update(m_model.message(message), isThinkingOpen(message));
    m_loaded.push_back(message);
    const Heights& heights = m_measures.messages[at(message)];
    if (heights.missing < 0 || heights.rows.count() != held.rows->count())
        fillEstimates(message, 0);
    return *held.rows;
}

RowContext TranscriptDocument::context(int message, const TranscriptRow& row)
{
    GroupState* const group = row.group >= 0 ? &m_messages[at(message)].groups[row.group] : nullptr;
    return {m_style, m_model.message(message), m_column, group};
}

int TranscriptDocument::rowCount(int message)
{
    return rows(message).count();
}

qint64 TranscriptDocument::total() const
{
    return devicePixels(m_style.px(topPadding)) + m_measures.totals.total();
}

qint64 TranscriptDocument::topOfMessage(int message) const
{
    return devicePixels(m_style.px(topPadding)) + m_measures.totals.offsetOf(message);
}

qint64 TranscriptDocument::topOf(RowRef ref)
{
    rows(ref.message);
    return topOfMessage(ref.message) + m_measures.messages[at(ref.message)].rows.offsetOf(ref.row);
}

int TranscriptDocument::heightOf(RowRef ref)
{
    rows(ref.message);
    return m_measures.messages[at(ref.message)].rows.height(ref.row);
}

bool TranscriptDocument::isMeasured(RowRef ref)
{
    rows(ref.message);
    return m_measures.messages[at(ref.message)].measured[at(ref.row)];
}

int TranscriptDocument::messageAt(qint64 y) const
{
    return m_measures.totals.rowAt(y - devicePixels(m_style.px(topPadding)));
}

std::optional<RowRef> TranscriptDocument::rowAt(qint64 y)
{
    if (m_messages.empty())
        return std::nullopt;
    int message = messageAt(y);
    // Reading a message corrects its height, which may put another one there.
    while (!m_messages[at(message)].rows) {
        rows(message);
        message = messageAt(y);
    }
    return RowRef{message, m_measures.messages[at(message)].rows.rowAt(y - topOfMessage(message))};
}

std::optional<RowRef> TranscriptDocument::next(RowRef ref)
{
    if (ref.row + 1 < rowCount(ref.message))
        return RowRef{ref.message, ref.row + 1};
    if (ref.message + 1 < messageCount())
        return RowRef{ref.message + 1, 0};
    return std::nullopt;
}

std::optional<RowRef> TranscriptDocument::previous(RowRef ref)
{
    if (ref.row > 0)
        return RowRef{ref.message, ref.row - 1};
    if (ref.message > 0)
        return RowRef{ref.message - 1, rowCount(ref.message - 1) - 1};
    return std::nullopt;
}

const TranscriptRow& TranscriptDocument::row(RowRef ref)
{
    return rows(ref.message).row(ref.row);
}

} // namespace varnel
