// What a single line can say about blocks. All functions take the line without its indentation, and none
// looks at a character twice.
#pragma once

#include "markdown/MarkdownBlock.h"

#include <QStringList>
#include <QStringView>

#include <optional>

namespace varnel {

struct HeadingLine
{
    int level = 1;
    QStringView text;
};

struct FenceLine
{
    QChar mark;
    qsizetype length = 0;
    QStringView info; ///< trimmed, nothing decoded
};

struct ListMarker
{
    bool ordered = false;
    QChar delimiter; ///< the bullet, or what follows the number
    int start = 1;
    int length = 1; ///< characters of the marker, which are as many columns
};

std::optional<HeadingLine> headingLine(QStringView line);
std::optional<FenceLine> openingFence(QStringView line);
bool isClosingFence(QStringView line, const FenceLine& opening);
bool isRuleLine(QStringView line);
/// 1 or 2 for the line below a heading, 0 for another.
int underlineLevel(QStringView line);
std::optional<ListMarker> listMarker(QStringView line);

/// The columns that the line below a table's header names.
std::optional<QList<MarkdownAlignment>> delimiterRow(QStringView line);
/// The cells of a row, trimmed, with escaped bars resolved; an empty cell between two bars counts.
QStringList tableCells(QStringView line);

/// The formula of a text that is one formula between display delimiters and nothing else.
std::optional<QStringView> displayMaths(QStringView text);
/// What ends the formula that begins with this line and goes on below it: "$$" or "\]". Null for another
/// line.
QStringView multilineMathsEnd(QStringView line);

/// Text with backslash escapes and character references resolved.
QString unescaped(QStringView text);

} // namespace varnel
