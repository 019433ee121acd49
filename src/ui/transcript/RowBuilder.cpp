#include "ui/transcript/RowBuilder.h"
#include "markdown/LinkTarget.h"
#include "store/ProjectFiles.h"

#include <algorithm>

namespace varnel {
namespace {

constexpr qreal paragraphSpace = 12;
constexpr qreal itemSpace = 6;
constexpr qreal deepestIndent = 240;
constexpr qsizetype longestText = 6000; ///< characters of a row; longer paragraphs are cut at a space
constexpr qsizetype longestLine = 2000; ///< characters of a line of code
constexpr qsizetype chunkText = 4096;   ///< characters of a row of code
constexpr int chunkLines = 32;
constexpr int chunkTableRows = 8;

/// A part of a text with its styles.
MarkdownText sliced(const MarkdownText& text, qsizetype start, qsizetype length)
{
    MarkdownText part;
    part.text = text.text.sliced(start, length);
    part.links = text.links;
    for (MarkdownRange range : text.ranges) {
        const qsizetype begin = std::max(range.start, start);
        const qsizetype end = std::min(range.start + range.length, start + length);
        if (begin >= end)
            continue;
        range.start = begin - start;
        range.length = end - begin;
        part.ranges.append(range);
    }
    return part;
}

/// Where to cut a text that is too long for a row: after a break if there is one, never within a character.
qsizetype cutAt(const QString& text, qsizetype start)
{
    if (text.size() - start <= longestText)
        return text.size();
    const qsizetype limit = start + longestText;
    const qsizetype lineBreak = text.lastIndexOf(QChar::LineSeparator, limit - 1);
    if (lineBreak > start + longestText / 2)
        return lineBreak + 1;
    for (qsizetype at = limit; at > limit - longestText / 4; --at) {
        if (text.at(at - 1).isSpace())
            return at;
    }
    return text.at(limit).isLowSurrogate() ? limit - 1 : limit;
}

bool isWide(char32_t c)
{
    return (c >= 0x1100 && c <= 0x115F) || (c >= 0x2E80 && c <= 0xA4CF) || (c >= 0xAC00 && c <= 0xD7A3) ||
           (c >= 0xF900 && c <= 0xFAFF) || (c >= 0xFE30 && c <= 0xFE6F) || (c >= 0xFF00 && c <= 0xFF60) ||
           (c >= 0xFFE0 && c <= 0xFFE6) || (c >= 0x1F300 && c <= 0x1FAFF) || (c >= 0x20000 && c <= 0x3FFFD);
}

int columnsOf(QStringView line)
{
    int columns = 0;
    for (qsizetype i = 0; i < line.size(); ++i) {
        const QChar c = line.at(i);
        if (c == QLatin1Char('\t'))
            columns += 4 - columns % 4;
        else if (c.isHighSurrogate() && i + 1 < line.size() && line.at(i + 1).isLowSurrogate())
            columns += isWide(QChar::surrogateToUcs4(c, line.at(++i))) ? 2 : 1;
        else
            columns += isWide(c.unicode()) ? 2 : 1;
    }
    return columns;
}

void addLine(CodeSource& code, qsizetype start, qsizetype end)
{
    while (end - start > longestLine) {
        const qsizetype cut =
            code.text.at(start + longestLine).isLowSurrogate() ? longestLine - 1 : longestLine;
        code.lines.push_back({start, cut});
        start += cut;
    }
    code.lines.push_back({start, end - start});
}

/// Whether a line is a piece of one that was cut and goes on below.
bool goesOn(const CodeSource& code, std::size_t line)
{
    return line + 1 < code.lines.size() &&
           code.lines[line].start + code.lines[line].length == code.lines[line + 1].start;
}

} // namespace

std::shared_ptr<CodeSource> makeCodeSource(const MarkdownCode& code, const CodeSource* earlier)
{
    auto source = std::make_shared<CodeSource>();
    source->text = code.text;
    const std::optional<QString> path = projectPathOfInfo(code.info);
    source->hasPath = path.has_value();
    source->label = path ? *path : code.info.section(QLatin1Char(' '), 0, 0, QString::SectionSkipEmpty);
    const QString language = source->hasPath
                                 ? source->label.section(QLatin1Char('/'), -1).section(QLatin1Char('.'), -1)
                                 : source->label;
    source->highlighter = CodeHighlighter(language);
    qsizetype start = earlier ? source->continueFrom(*earlier) : 0;
    auto line = source->lines.size();
    while (true) {
        const qsizetype found = code.text.indexOf(QLatin1Char('\n'), start);
        addLine(*source, start, found < 0 ? code.text.size() : found);
        if (found < 0)
            break;
        start = found + 1;
    }
    for (; line < source->lines.size(); ++line) {
        const CodeLine& added = source->lines[line];
        source->columns =
            std::max(source->columns, columnsOf(QStringView(code.text).mid(added.start, added.length)));
    }
    return source;
}

RowBuilder::RowBuilder(Rows& rows, int firstRow, int firstGroup)
    : m_rows(rows)
    , m_before(static_cast<qsizetype>(rows.size()))
    , m_number(firstRow)
    , m_group(firstGroup)
{}

TranscriptRow& RowBuilder::add(RowKind kind, qreal spaceAbove)
{
    TranscriptRow row;
    row.kind = kind;
    row.spaceAbove = m_itemSpace >= 0 ? m_itemSpace : m_number == 0 ? 0 : spaceAbove;
    if (m_number == 0)
        row.spaceAbove = 0;
    row.frame = m_frame;
    m_itemSpace = -1;
    m_frame.marker.clear();
    m_frame.checked.reset();
    m_frame.freshBars = 0;
    ++m_number;
    m_rows.push_back(std::move(row));
    return m_rows.back();
}

void RowBuilder::addBlock(const MarkdownBlock& block)
{
    std::visit([this](const auto& content) { addContent(content); }, block.content);
}

void RowBuilder::addText(const MarkdownText& text, RowKind kind, qreal spaceAbove, int headingLevel)
{
    qsizetype start = 0;
    do {
        const qsizetype end = cutAt(text.text, start);
        TranscriptRow& row = add(kind, start == 0 ? spaceAbove : 0);
        row.text = start == 0 && end == text.text.size() ? text : sliced(text, start, end - start);
        row.headingLevel = headingLevel;
        row.begins = start == 0;
        row.ends = end == text.text.size();
        start = end;
    } while (start < text.text.size());
}

void RowBuilder::addContent(const MarkdownParagraph& paragraph)
{
    addText(paragraph.text, RowKind::Text, paragraphSpace);
}

void RowBuilder::addContent(const MarkdownHeading& heading)
{
    addText(heading.text, RowKind::Text, heading.level <= 2 ? 24 : 20, heading.level);
}

void RowBuilder::addContent(const MarkdownRule&)
{
    add(RowKind::Rule, paragraphSpace);
}

void RowBuilder::addContent(const MarkdownMaths& maths)
{
    addPlain(maths.source, RowKind::Maths, paragraphSpace);
}

void RowBuilder::addContent(const MarkdownCode& code)
{
    const std::shared_ptr<CodeSource> source = makeCodeSource(code, m_earlier.get());
    m_earlier.reset();
    const int group = m_group++;
    const int groupStart = m_number;
    const auto addPart = [&](RowKind kind, qreal space, int first, int count) {
        TranscriptRow& row = add(kind, space);
        row.code = source;
        row.group = group;
        row.groupStart = groupStart;
        row.first = first;
        row.count = count;
        row.ends = count == 0 || !goesOn(*source, static_cast<std::size_t>(first + count - 1));
    };
    addPart(RowKind::CodeHeader, paragraphSpace, 0, 0);
    const auto total = static_cast<int>(source->lines.size());
    for (int first = 0; first < total;) {
        int count = 0;
        qsizetype length = 0;
        // A piece of a cut line stands alone, so that every other row holds whole lines.
        while (first + count < total && count < chunkLines && length < chunkText) {
            const std::size_t line = static_cast<std::size_t>(first) + static_cast<std::size_t>(count);
            if (goesOn(*source, line)) {
                count = std::max(count, 1);
                break;
            }
            length += source->lines[line].length;
            ++count;
        }
        addPart(RowKind::CodeLines, 0, first, count);
        first += count;
    }
    addPart(RowKind::CodeFooter, 0, 0, 0);
}

void RowBuilder::addContent(const MarkdownQuote& quote)
{
    const RowFrame outer = m_frame;
    m_frame.bars.append(m_frame.indent);
    m_frame.freshBars = outer.freshBars + 1;
    m_frame.indent = std::min(m_frame.indent + 16, deepestIndent);
    for (const MarkdownBlock& block : quote.blocks)
        addBlock(block);
    m_frame.bars = outer.bars;
    m_frame.freshBars = 0;
    m_frame.indent = outer.indent;
}

void RowBuilder::addItem(const MarkdownItem& item, const QString& marker)
{
    m_frame.marker = item.checked ? QString() : marker;
    m_frame.checked = item.checked;
    if (item.blocks.isEmpty())
        add(RowKind::Text, itemSpace);
    for (const MarkdownBlock& block : item.blocks)
        addBlock(block);
}

void RowBuilder::addContent(const MarkdownList& list)
{
    const RowFrame outer = m_frame;
    const auto last = list.start + static_cast<qint64>(list.items.size()) - 1;
    const qreal digits = list.ordered ? static_cast<qreal>(QString::number(last).size()) : 1;
    m_frame.indent = std::min(m_frame.indent + 16 + 8 * digits, deepestIndent);
    m_frame.listDepth += 1;
    m_frame.ordered = list.ordered;
    const QString bullet(QChar(outer.listDepth % 2 == 0 ? 0x2022 : 0x25E6));
    for (qsizetype i = 0; i < list.items.size(); ++i) {
        // One distance for tight and loose lists: a blank line that arrives must not push items apart.
        m_itemSpace = i == 0 && outer.listDepth == 0 ? paragraphSpace : itemSpace;
        addItem(list.items[i], list.ordered ? QStringLiteral("%1.").arg(list.start + i) : bullet);
    }
    // What waited for a row before the list has gone to its first.
    m_itemSpace = -1;
    m_frame = outer;
    m_frame.marker.clear();
    m_frame.checked.reset();
    m_frame.freshBars = 0;
}

void RowBuilder::addContent(const MarkdownTable& table)
{
    const auto shared = std::make_shared<const MarkdownTable>(table);
    const int group = m_group++;
    const int groupStart = m_number;
    const auto total = static_cast<int>(table.rows.size()) + 1;
    for (int first = 0; first < total; first += chunkTableRows) {
        TranscriptRow& row = add(RowKind::Table, first == 0 ? paragraphSpace : 0);
        row.table = shared;
        row.group = group;
        row.groupStart = groupStart;
        row.first = first;
        row.count = std::min(chunkTableRows, total - first);
        row.begins = first == 0;
        row.ends = first + row.count == total;
    }
}

void RowBuilder::addPlain(const QString& text, RowKind kind, qreal spaceAbove)
{
    MarkdownText plain;
    plain.text = text;
    plain.text.replace(QLatin1Char('\n'), QChar(QChar::LineSeparator));
    addText(plain, kind, spaceAbove);
}

void RowBuilder::addBubble(const QString& text)
{
    addPlain(text, RowKind::Bubble, 0);
}

void RowBuilder::addThinking(const QString& text)
{
    m_frame.bars = {0};
    m_frame.indent = 16;
    qsizetype start = 0;
    while (start < text.size()) {
        qsizetype end = text.indexOf(QLatin1String("\n\n"), start);
        if (end < 0)
            end = text.size();
        const QString paragraph = text.sliced(start, end - start).trimmed();
        if (!paragraph.isEmpty())
            addPlain(paragraph, RowKind::ThinkingText, start == 0 ? 4 : 8);
        start = end + 2;
    }
    m_frame = {};
}

void RowBuilder::addStep(const TranscriptStep& step, qreal spaceAbove)
{
    TranscriptRow& row = add(RowKind::Step, spaceAbove);
    row.text.text = step.text;
    row.first = step.kind == TranscriptStep::Kind::Searched ? 0 : 1;
}

void RowBuilder::addSimple(RowKind kind, qreal spaceAbove, const QString& text)
{
    TranscriptRow& row = add(kind, spaceAbove);
    row.text.text = text;
}

} // namespace varnel
