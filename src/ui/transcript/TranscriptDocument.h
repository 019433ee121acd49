#pragma once

#include "ui/transcript/HeightIndex.h"
#include "ui/transcript/MessageRows.h"
#include "ui/transcript/RowLayout.h"

#include <compare>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace varnel {

/// A row of a conversation.
struct RowRef
{
    int message = 0;
    int row = 0;

    auto operator<=>(const RowRef&) const = default;
};

/// A conversation cut into rows: how high each is, where it stands, and its layout when it is near the view.
///
/// Vertical positions and heights are device pixels from the top of the conversation, so that sums are exact.
/// A height is an estimate until the row is measured; measured heights are kept for each width the column
/// had. Messages far from the view hold no rows at all.
class TranscriptDocument
{
public:
    /// Both must outlive the document.
    TranscriptDocument(const TranscriptModel& model, const TranscriptStyle& style);
    ~TranscriptDocument();
    TranscriptDocument(const TranscriptDocument&) = delete;
    TranscriptDocument& operator=(const TranscriptDocument&) = delete;
    TranscriptDocument(TranscriptDocument&&) = delete;
    TranscriptDocument& operator=(TranscriptDocument&&) = delete;

    /// @param width of the view, logical pixels. @param ratio device pixels per logical pixel.
    void setGeometry(qreal width, qreal ratio);
    /// Fonts or the zoom changed: every height is open again.
    void remeasure();
    /// Colours changed: heights stay, layouts are made again.
    void redraw();

    // What the model says happened to it.
    void reset();
    void append();
    /// @param mayReflow whether text that is shown may move: the view follows the end.
    /// Returns the first row that may look different.
    RowRef update(int message, bool mayReflow);
    void removeFrom(int first);

    const TranscriptModel& model() const { return m_model; }
    const TranscriptStyle& style() const { return m_style; }
    const RowColumn& column() const { return m_column; }
    int messageCount() const { return static_cast<int>(m_messages.size()); }
    int rowCount(int message);
    qint64 total() const;
    qint64 topOf(RowRef ref);
    qint64 topOfMessage(int message) const;
    int heightOf(RowRef ref);
    bool isMeasured(RowRef ref);
    /// The row at a height, the nearest one outside of the conversation; none without messages.
    std::optional<RowRef> rowAt(qint64 y);
    int messageAt(qint64 y) const;
    std::optional<RowRef> next(RowRef ref);
    std::optional<RowRef> previous(RowRef ref);

    const TranscriptRow& row(RowRef ref);
    /// The row's layout; measures it if need be.
    const RowLayout& layout(RowRef ref);
    /// Measures all rows between two heights; whether any of them, or its place, was not as estimated.
    bool measure(qint64 from, qint64 to);
    /// Measures rows that are not yet, from a message outwards, until the time is over. False when all are.
    bool measureOutwards(int message, std::chrono::steady_clock::time_point end);

    /// The reader's choices for the group of a row; null for rows without one. Changes need regroup().
    GroupState* group(RowRef ref);
    /// Lays out all rows of a group again; returns the first row after them.
    int regroup(RowRef ref);
    bool isThinkingOpen(int message) const;
    void setThinkingOpen(int message, bool open);
    /// Lets go of layouts and rows that are far from the given rows.
    void release(RowRef first, RowRef last);

private:
    struct Heights
    {
        HeightIndex rows;
        std::vector<bool> measured;
        int missing = -1;     ///< rows not measured; -1 when the rows themselves are not known
        quint32 revision = 0; ///< of the message they belong to
    };
    /// All heights at one column width.
    struct Measures
    {
        std::vector<Heights> messages;
        HeightIndex totals;
    };
    struct Message
    {
        std::unique_ptr<MessageRows> rows;
        std::map<int, GroupState> groups;
        std::optional<bool> thinkingOpen;
        quint32 revision = 1;
        bool hasThought = false; ///< it was known how long the thinking took
    };
    /// What heights depend on.
    struct Key
    {
        qreal width = 0;
        qreal wide = 0;
        qreal ratio = 1;
        auto operator<=>(const Key&) const = default;
    };

    static std::size_t at(int index) { return static_cast<std::size_t>(index); }
    MessageRows& rows(int message);
    RowContext context(int message, const TranscriptRow& row);
    int estimateMessage(int message) const;
    int devicePixels(qreal height) const;
    void startMeasures();
    void fillEstimates(int message, int from);
    void setTotal(int message);
    void setMeasured(RowRef ref, int height);
    void dropLayouts();
    int reflowTables(int message, int from);
    bool measureMessage(int message, std::chrono::steady_clock::time_point end);

    const TranscriptModel& m_model;
    const TranscriptStyle& m_style;
    RowColumn m_column;
    std::vector<Message> m_messages;
    Measures m_measures;
    std::vector<std::pair<Key, Measures>> m_otherWidths; ///< newest last
    std::vector<int> m_loaded;                           ///< messages that hold rows
    int m_idleAbove = -1; ///< the next message to measure upwards, and downwards
    int m_idleBelow = -1;
};

} // namespace varnel
