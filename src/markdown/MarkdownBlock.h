#pragma once

#include <QFlags>
#include <QList>
#include <QString>

#include <optional>
#include <variant>

namespace varnel {

struct MarkdownBlock;

/// How a stretch of text is set. Styles combine freely.
enum class MarkdownStyle : quint16 {
    Strong = 0x01,
    Emphasis = 0x02,
    Strikethrough = 0x04,
    Code = 0x08,
    Link = 0x10,
    Image = 0x20,        ///< the description of an image, which is shown as a link and never loaded
    Maths = 0x40,        ///< TeX source without its delimiters, to be set within the line
    DisplayMaths = 0x80, ///< the same, to be set on a line of its own
};
Q_DECLARE_FLAGS(MarkdownStyles, MarkdownStyle)
Q_DECLARE_OPERATORS_FOR_FLAGS(MarkdownStyles)

/// A styled stretch of a MarkdownText, counted in UTF-16 units.
struct MarkdownRange
{
    qsizetype start = 0;
    qsizetype length = 0;
    MarkdownStyles styles;
    qsizetype link = -1; ///< index into MarkdownText::links, -1 for none

    bool operator==(const MarkdownRange&) const = default;
};

struct MarkdownLink
{
    QString destination; ///< as written, whatever its scheme; see isOpenableLink()
    QString title;

    bool operator==(const MarkdownLink&) const = default;
};

/// Text with its styles: what a line layout takes. A soft break is a line feed, a hard break a
/// QChar::LineSeparator; either may be replaced by another single character without moving a range.
struct MarkdownText
{
    QString text;
    QList<MarkdownRange> ranges; ///< in order, without overlap, none without a style
    QList<MarkdownLink> links;

    bool operator==(const MarkdownText&) const = default;
};

struct MarkdownParagraph
{
    MarkdownText text;

    bool operator==(const MarkdownParagraph&) const = default;
};

struct MarkdownHeading
{
    int level = 1; ///< 1 to 6
    MarkdownText text;

    bool operator==(const MarkdownHeading&) const = default;
};

struct MarkdownCode
{
    QString info;       ///< all that follows the opening fence, trimmed; empty for indented code
    QString text;       ///< without the line feed of its last line
    bool closed = true; ///< false while the closing fence has not come

    bool operator==(const MarkdownCode&) const = default;
};

struct MarkdownQuote
{
    QList<MarkdownBlock> blocks;

    bool operator==(const MarkdownQuote&) const;
};

struct MarkdownItem
{
    std::optional<bool> checked; ///< set for an item of a task list
    QList<MarkdownBlock> blocks;

    bool operator==(const MarkdownItem&) const;
};

struct MarkdownList
{
    bool ordered = false;
    int start = 1;     ///< number of the first item of an ordered list
    bool tight = true; ///< no blank lines between its items: paragraphs are set without space around them
    QList<MarkdownItem> items;

    bool operator==(const MarkdownList&) const;
};

enum class MarkdownAlignment { Default, Left, Centre, Right };

struct MarkdownTable
{
    QList<MarkdownAlignment> columns;
    QList<MarkdownText> header;      ///< one cell for each column
    QList<QList<MarkdownText>> rows; ///< at most one cell for each column; what is missing is empty

    bool operator==(const MarkdownTable&) const = default;
};

struct MarkdownRule
{
    bool operator==(const MarkdownRule&) const = default;
};

/// A formula on lines of its own: its TeX source without the delimiters.
struct MarkdownMaths
{
    QString source;

    bool operator==(const MarkdownMaths&) const = default;
};

/// One block of a Markdown text. Copies are cheap: all contents are implicitly shared.
struct MarkdownBlock
{
    /// Quotes and list items lie inside each other at most this deep; a marker further in is text. Code that
    /// descends into blocks may recurse.
    static constexpr int maximumDepth = 100;

    std::variant<MarkdownParagraph, MarkdownHeading, MarkdownCode, MarkdownQuote, MarkdownList, MarkdownTable,
                 MarkdownRule, MarkdownMaths>
        content;

    bool operator==(const MarkdownBlock&) const;
};

} // namespace varnel
