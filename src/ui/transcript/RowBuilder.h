#pragma once

#include "markdown/MarkdownBlock.h"
#include "ui/transcript/TranscriptModel.h"
#include "ui/transcript/TranscriptRow.h"

#include <vector>

namespace varnel {

/// Cuts Markdown blocks and plain texts into rows. Nothing is measured here.
class RowBuilder
{
public:
    using Rows = std::vector<TranscriptRow>;

    /// @param rows where the rows go; those there already are those of the message so far.
    /// @param firstRow the number in the message of the first one added now.
    /// @param firstGroup the number of the first code block or table.
    RowBuilder(Rows& rows, int firstRow, int firstGroup);

    /// The code that the first code block added may continue; it need not be looked through again.
    void continueCode(std::shared_ptr<const CodeSource> earlier) { m_earlier = std::move(earlier); }
    void addBlock(const MarkdownBlock& block);
    /// The user's own words, as typed.
    void addBubble(const QString& text);
    /// What the model thought, as plain paragraphs.
    void addThinking(const QString& text);
    void addStep(const TranscriptStep& step, qreal spaceAbove);
    void addSimple(RowKind kind, qreal spaceAbove, const QString& text = {});

    /// How many code blocks and tables there are by now.
    int nextGroup() const { return m_group; }
    qsizetype added() const { return static_cast<qsizetype>(m_rows.size()) - m_before; }

private:
    void addContent(const MarkdownParagraph& paragraph);
    void addContent(const MarkdownHeading& heading);
    void addContent(const MarkdownCode& code);
    void addContent(const MarkdownQuote& quote);
    void addContent(const MarkdownList& list);
    void addContent(const MarkdownTable& table);
    void addContent(const MarkdownRule& rule);
    void addContent(const MarkdownMaths& maths);
    void addItem(const MarkdownItem& item, const QString& marker);
    /// Text of any length, in pieces; `row` is what they have in common.
    void addText(const MarkdownText& text, RowKind kind, qreal spaceAbove, int headingLevel = 0);
    void addPlain(const QString& text, RowKind kind, qreal spaceAbove);
    /// A row in the present frame. A marker that waits goes to it.
    TranscriptRow& add(RowKind kind, qreal spaceAbove);

    Rows& m_rows;
    qsizetype m_before;
    int m_number; ///< of the next row in its message
    int m_group;
    std::shared_ptr<const CodeSource> m_earlier;
    RowFrame m_frame;
    qreal m_itemSpace = -1; ///< space above the first row of an item, -1 when it is taken
};

/// A code block with its lines found; over-long lines are cut into pieces.
/// @param earlier null, or what is known of a text that this one may continue.
std::shared_ptr<CodeSource> makeCodeSource(const MarkdownCode& code, const CodeSource* earlier);

} // namespace varnel
