#pragma once

#include "markdown/BlockSyntax.h"
#include "markdown/LineCursor.h"
#include "markdown/LinkDefinitions.h"
#include "markdown/MarkdownBlock.h"

#include <vector>

namespace varnel {

class InlineParser;

/// Builds blocks from the lines of a text, one after the other. A line costs what it holds, not what came
/// before it. A builder is a value: a copy may be closed to see what the text so far amounts to, and the
/// original goes on.
class BlockBuilder
{
public:
    /// @param inlines parses the text of leaf blocks; it must outlive the builder and its copies.
    /// @param definitions those of the whole text when they are known already: then none are looked for.
    explicit BlockBuilder(InlineParser& inlines);
    BlockBuilder(InlineParser& inlines, LinkDefinitions definitions);

    /// Takes the next line, without its end.
    void addLine(QStringView line);
    /// Ends the text: whatever is open becomes a block.
    void close();
    /// The top-level blocks that are complete and were not taken yet. No line to come changes them.
    QList<MarkdownBlock> takeBlocks();

    const LinkDefinitions& definitions() const { return m_definitions; }

private:
    /// A block that holds blocks and is still open.
    struct Container
    {
        enum class Kind { Document, Quote, List, Item };

        explicit Container(Kind is = Kind::Document)
            : kind(is)
        {}

        Kind kind;
        QList<MarkdownBlock> blocks;
        MarkdownList list;           // of a List: what is complete of it
        ListMarker marker;           // of a List: that of its items
        int contentIndentation = 0;  // of an Item: columns before what belongs to it
        std::optional<bool> checked; // of an Item
    };

    /// The block at the end that takes lines.
    struct Leaf
    {
        enum class Kind { None, Paragraph, Fence, IndentedCode, Table, Maths };

        Kind kind = Kind::None;
        QString text;
        qsizetype lastLine = 0; // of a Paragraph: where its last line begins
        FenceLine fence;        // its info is kept below
        QString info;
        int indentation = 0; // of a Fence
        bool hasLines = false;
        QStringView mathsEnd;
        MarkdownTable table;
    };

    using Kind = Container::Kind;

    std::size_t matchContainers(LineCursor& cursor) const;
    bool continueLeaf(LineCursor& cursor);
    bool continueMaths(QStringView line);
    /// Opens the container blocks that begin here; true if a leaf block took the rest of the line as well.
    bool openBlocks(LineCursor& cursor, std::size_t matched);
    bool openLeaf(LineCursor& cursor, std::size_t matched, bool inParagraph);
    bool openItem(LineCursor& cursor, std::size_t matched, bool inParagraph);
    bool openCode(LineCursor& cursor, std::size_t matched);
    bool openMaths(QStringView line, std::size_t matched);
    bool endParagraphAsHeading(QStringView line);
    bool endParagraphAsTable(QStringView line);
    void addText(LineCursor& cursor, std::size_t matched);
    void endBlankLine(std::size_t matched);
    void addRow(QStringView line);

    bool isDeepest() const;
    /// Closes what the line does not continue and makes room for another block.
    void closeTo(std::size_t count, bool forItem = false);
    void closeContainer();
    void closeLeaf();
    void closeParagraph();
    void appendLeafLine(QStringView line);
    void append(MarkdownBlock block);
    std::optional<bool> takeTaskMark(QStringView& text) const;

    InlineParser* m_inlines;
    LinkDefinitions m_definitions;
    bool m_definitionsKnown = false;
    std::vector<Container> m_containers;
    int m_depth = 0; // quotes and items among them
    Leaf m_leaf;
    bool m_afterBlankLine = false;
    bool m_containerOpened = false; // on the current line
};

} // namespace varnel
