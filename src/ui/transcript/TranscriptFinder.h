#pragma once

#include "ui/transcript/TranscriptDocument.h"

#include <QStringMatcher>

#include <set>

namespace varnel {

/// A text that was found: characters of a row's plain text.
struct FoundText
{
    RowRef row;
    int start = 0;
    int length = 0;

    auto operator<=>(const FoundText&) const = default;
};

/// Finds a text, in any case, in what a conversation shows.
///
/// It looks through one message after the other, for as long as it is given time, and keeps only how often
/// the text stands in each: where exactly is found again when it is wanted. So a conversation may be of any
/// length, and each match has its number among all.
class TranscriptFinder
{
public:
    /// The document outlives the finder.
    explicit TranscriptFinder(TranscriptDocument& document);

    const QString& text() const { return m_text; }
    bool isActive() const { return !m_text.isEmpty(); }
    /// Begins to look for a text, from a message to the end and then from the beginning. An empty text ends
    /// the search.
    void start(const QString& text, int from);
    /// Goes on until the time is over; whether there is more to look through.
    bool goOn(std::chrono::steady_clock::time_point end);
    bool isDone() const { return m_left == 0 && m_changed.empty(); }

    /// How often the text was found so far.
    int count() const { return static_cast<int>(m_counts.total()); }
    /// The place of the present match among those found so far, from 1; 0 for none.
    int number() const;
    const std::optional<FoundText>& current() const { return m_current; }
    /// Makes the next match, or the one before, the present one; from the end it goes on at the beginning.
    /// Without a present one it takes the first at or after the message that start() was given.
    void step(bool forward);

    /// Where the text stands in a row.
    std::vector<FoundText> within(RowRef ref, const TranscriptRow& row) const;

    // What happens to the conversation.
    void messageAppended();
    /// Its text changed, or more or less of it is shown.
    void messageChanged(int message);
    void messagesRemoved(int first);

private:
    void look(int message);
    bool mayHold(const TranscriptMessage& message) const;
    void setCurrent(int message, int index);

    TranscriptDocument& m_document;
    QString m_text;
    QStringMatcher m_matcher;
    std::vector<QStringMatcher> m_words; ///< letters and digits of the text, which no markup splits
    HeightIndex m_counts;                ///< of each message; sums are numbers of matches
    int m_from = 0;
    int m_next = 0;
    int m_left = 0; ///< messages from m_next on, past the end from the beginning, not looked through
    std::set<int> m_changed;
    int m_index = -1; ///< of the present match in its message
    std::optional<FoundText> m_current;
};

} // namespace varnel
