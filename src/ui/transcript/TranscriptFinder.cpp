#include "ui/transcript/TranscriptFinder.h"

#include <algorithm>

namespace varnel {
namespace {

/// Whether a row shows text of the message itself.
bool isSearched(const TranscriptRow& row)
{
    switch (row.kind) {
    case RowKind::Text:
    case RowKind::CodeLines:
    case RowKind::Table:
    case RowKind::Maths:
    case RowKind::Bubble:
    case RowKind::ThinkingText:
        return true;
    default:
        return false;
    }
}

std::vector<QStringMatcher> wordsOf(const QString& text)
{
    std::vector<QStringMatcher> words;
    QString word;
    for (const QChar c : text + QLatin1Char(' ')) {
        if (c.isLetterOrNumber()) {
            word += c;
        } else if (!word.isEmpty()) {
            words.emplace_back(std::exchange(word, {}), Qt::CaseInsensitive);
        }
    }
    return words;
}

} // namespace

TranscriptFinder::TranscriptFinder(TranscriptDocument& document)
    : m_document(document)
{}

void TranscriptFinder::start(const QString& text, int from)
{
    m_text = text;
    m_matcher = QStringMatcher(text, Qt::CaseInsensitive);
    m_words = wordsOf(text);
    m_counts.clear();
    m_changed.clear();
    m_current.reset();
    m_index = -1;
    m_left = isActive() ? m_document.messageCount() : 0;
    for (int message = 0; message < m_left; ++message)
        m_counts.append(0);
    m_from = m_next = m_left == 0 ? 0 : std::clamp(from, 0, m_left - 1);
}

bool TranscriptFinder::goOn(std::chrono::steady_clock::time_point end)
{
    while (!isDone() && std::chrono::steady_clock::now() < end) {
        if (m_left > 0) {
            look(m_next);
            m_next = (m_next + 1) % m_document.messageCount();
            --m_left;
        } else {
            look(*m_changed.begin());
            m_changed.erase(m_changed.begin());
        }
    }
    return !isDone();
}

/// Whether a message can hold the text at all; looking at the words of its source is much quicker than
/// reading it.
bool TranscriptFinder::mayHold(const TranscriptMessage& message) const
{
    return std::all_of(m_words.begin(), m_words.end(), [&message](const QStringMatcher& word) {
        return word.indexIn(message.content) >= 0 || word.indexIn(message.thinking) >= 0;
    });
}

void TranscriptFinder::look(int message)
{
    const TranscriptMessage& contents = m_document.model().message(message);
    int count = 0;
    if (mayHold(contents)) {
        // Rows of its own: those of the document would stay in memory.
        MessageRows rows;
        rows.update(contents, m_document.isThinkingOpen(message));
        for (int row = 0; row < rows.count(); ++row)
            count += static_cast<int>(within({message, row}, rows.row(row)).size());
    }
    m_counts.setHeight(message, count);
    if (m_current && m_current->row.message == message)
        setCurrent(message, std::min(m_index, count - 1));
}

std::vector<FoundText> TranscriptFinder::within(RowRef ref, const TranscriptRow& row) const
{
    std::vector<FoundText> found;
    if (!isActive() || !isSearched(row))
        return found;
    const QString text = row.plainText();
    const auto length = static_cast<int>(m_text.size());
    for (qsizetype at = m_matcher.indexIn(text); at >= 0; at = m_matcher.indexIn(text, at + length))
        found.push_back({ref, static_cast<int>(at), length});
    return found;
}

int TranscriptFinder::number() const
{
    return m_current ? static_cast<int>(m_counts.offsetOf(m_current->row.message)) + m_index + 1 : 0;
}

void TranscriptFinder::step(bool forward)
{
    if (count() == 0)
        return;
    qint64 number = 0; // from 0
    if (!m_current) {
        number = m_counts.offsetOf(m_from);
        if (!forward)
            --number;
    } else {
        number = this->number() - 1 + (forward ? 1 : -1);
    }
    number = (number + count()) % count();
    const int message = m_counts.rowAt(number);
    setCurrent(message, static_cast<int>(number - m_counts.offsetOf(message)));
}

/// Finds where the match of that number in its message stands.
void TranscriptFinder::setCurrent(int message, int index)
{
    m_current.reset();
    m_index = index;
    int before = 0;
    for (int row = 0; index >= 0 && row < m_document.rowCount(message); ++row) {
        const std::vector<FoundText> found = within({message, row}, m_document.row({message, row}));
        if (before + static_cast<int>(found.size()) > index) {
            m_current = found[static_cast<std::size_t>(index - before)];
            return;
        }
        before += static_cast<int>(found.size());
    }
}

void TranscriptFinder::messageAppended()
{
    if (!isActive())
        return;
    m_counts.append(0);
    m_changed.insert(m_counts.count() - 1);
    // The way from the present place around to where it began is longer by the new one.
    if (m_left > 0)
        ++m_left;
}

void TranscriptFinder::messageChanged(int message)
{
    if (isActive())
        m_changed.insert(message);
}

void TranscriptFinder::messagesRemoved(int first)
{
    if (!isActive())
        return;
    if (m_left > 0) {
        // The places that were left no longer are; looking again from the beginning finds those that remain.
        const QString text = m_text;
        start(text, std::min(m_from, first));
        return;
    }
    m_counts.truncate(first);
    m_changed.erase(m_changed.lower_bound(first), m_changed.end());
    m_from = std::min(m_from, std::max(0, first - 1));
    if (m_current && m_current->row.message >= first)
        m_current.reset();
}

} // namespace varnel
