#pragma once

#include "markdown/MarkdownBlock.h"
#include "ui/transcript/CodeHighlighter.h"

#include <QString>

#include <memory>
#include <vector>

namespace varnel {

class RowLayout;

/// A line of a code block; over-long ones are cut into pieces of which only the last has a line feed after
/// it.
struct CodeLine
{
    qsizetype start = 0;
    qsizetype length = 0;
};

/// A code block, shared by the rows that show it.
struct CodeSource
{
    QString text;
    QString label;        ///< the language, or the path that the block is to be written to
    bool hasPath = false; ///< the label is a path: the block can be written to a project
    std::vector<CodeLine> lines;
    int columns = 0; ///< of the longest line, in widths of a Latin letter
    CodeHighlighter highlighter;
    std::vector<quint8> states; ///< what the highlighter carried into each line, as far as it got

    /// The tokens of a line; lines far into an enormous block have none.
    std::vector<CodeToken> tokens(int line);
    /// Takes over what is known of a text that this one continues: all its lines but the last. Returns where
    /// the first line that is not known begins.
    qsizetype continueFrom(const CodeSource& earlier);
};

/// What lies before the text of a row: the quotes and lists it stands in.
struct RowFrame
{
    qreal indent = 0;            ///< from the column's leading edge, at zoom 1
    QList<qreal> bars;           ///< where the bars of the quotes stand
    int freshBars = 0;           ///< how many of them, from the last, begin with this row
    QString marker;              ///< "•", "3.", or empty
    std::optional<bool> checked; ///< the box of a task instead of a marker
    int listDepth = 0;           ///< lists around it
    bool ordered = false;        ///< the kind of the innermost of them

    bool operator==(const RowFrame&) const = default;
};

enum class RowKind : quint8 {
    Text,
    CodeHeader,
    CodeLines,
    CodeFooter,
    Table,
    Rule,
    Maths,
    Bubble,
    Thinking, ///< the collapsed row that opens and closes what the model thought
    ThinkingText,
    Waiting,
    Chips, ///< what was attached to a prompt
    Step,  ///< something that was looked up for the reply
    Error,
    Unfinished,
    Actions,
};

/// The smallest piece of a message that is laid out: of bounded size whatever the message holds, so that only
/// what is near the view ever has to be measured. A long code block, table or paragraph makes many rows.
struct TranscriptRow
{
    RowKind kind = RowKind::Text;
    qreal spaceAbove = 0; ///< at zoom 1
    RowFrame frame;
    MarkdownText text;
    int headingLevel = 0; ///< 0 for none
    std::shared_ptr<CodeSource> code;
    std::shared_ptr<const MarkdownTable> table;
    int first = 0;                     ///< the first line or table row shown here
    int count = 0;                     ///< how many
    int group = -1;                    ///< the number of the code block or table in its message
    int groupStart = 0;                ///< the row its group begins with
    bool begins = true;                ///< not the continuation of the row above
    bool ends = true;                  ///< not continued by the row below
    std::unique_ptr<RowLayout> layout; ///< only near the view

    TranscriptRow();
    TranscriptRow(TranscriptRow&&) noexcept;
    TranscriptRow& operator=(TranscriptRow&&) noexcept;
    ~TranscriptRow();

    /// Whether the other row looks the same, so that its layout can stay.
    bool looksLike(const TranscriptRow& other) const;
    /// The characters a selection can hold.
    QString plainText() const;
};

/// The text with everything that could deceive or disturb made visible: control characters and characters
/// that reorder text. Each is replaced by a single other one, so positions stay the same.
/// @param strict also marks of direction and invisible spaces, for code and for addresses.
QString harmless(QString text, bool strict);

} // namespace varnel
