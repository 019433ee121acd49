#pragma once

#include "ui/transcript/TranscriptDocument.h"

namespace varnel {

/// A place between two characters of a conversation.
struct TextPosition
{
    RowRef row;
    int offset = 0; ///< in the row's plain text

    auto operator<=>(const TextPosition&) const = default;
};

/// What the reader has selected, from where the selection began to where it was drawn. It may span paragraphs
/// and messages, and stays while the text grows below it.
class TranscriptSelection
{
public:
    /// How far a selection reaches with every move: what was clicked once, twice or three times.
    enum class Unit { Character, Word, Paragraph };

    bool isEmpty() const { return m_anchor == m_cursor; }
    TextPosition begin() const { return std::min(m_anchor, m_cursor); }
    TextPosition end() const { return std::max(m_anchor, m_cursor); }

    void clear();
    /// Begins a selection; with words and paragraphs it is not empty.
    void start(TranscriptDocument& document, TextPosition position, Unit unit);
    /// Draws it to another place, by whole units.
    void extend(TranscriptDocument& document, TextPosition position);
    /// All that the message says.
    void selectMessage(TranscriptDocument& document, int message);
    /// Forgets places that no longer exist.
    void clampTo(TranscriptDocument& document);

    /// The selected characters of a row.
    struct Stretch
    {
        int start = 0;
        int end = 0;
    };
    Stretch within(RowRef row, int length) const;

private:
    struct Span
    {
        TextPosition begin;
        TextPosition end;
    };
    Span unitAt(TranscriptDocument& document, TextPosition position) const;

    TextPosition m_anchor;
    TextPosition m_cursor;
    Span m_first; ///< the unit that was clicked
    Unit m_unit = Unit::Character;
};

struct CopiedText
{
    QString plain;
    QString html;
};

/// The selected text, as text and as HTML that names nothing to be loaded.
CopiedText selectedText(TranscriptDocument& document, const TranscriptSelection& selection);

} // namespace varnel
