#include "markdown/BlockBuilder.h"

#include "markdown/InlineParser.h"

namespace varnel {

namespace {

constexpr int codeIndentation = 4;

} // namespace

BlockBuilder::BlockBuilder(InlineParser& inlines)
    : m_inlines(&inlines)
    , m_containers(1)
{}

BlockBuilder::BlockBuilder(InlineParser& inlines, LinkDefinitions definitions)
    : m_inlines(&inlines)
    , m_definitions(std::move(definitions))
    , m_definitionsKnown(true)
    , m_containers(1)
{}

void BlockBuilder::addLine(QStringView line)
{
    QString repaired;
    if (line.contains(QChar::Null)) {
        repaired = line.toString().replace(QChar::Null, QChar::ReplacementCharacter);
        line = repaired;
    }
    LineCursor cursor(line);
    m_containerOpened = false;
    const std::size_t matched = matchContainers(cursor);
    if (matched == m_containers.size() && continueLeaf(cursor)) {
        m_afterBlankLine = m_afterBlankLine && cursor.isBlank();
        return;
    }
    if (!openBlocks(cursor, matched))
        addText(cursor, m_containerOpened ? m_containers.size() : matched);
    if (!cursor.isBlank())
        m_afterBlankLine = false;
}

/// How many of the open containers the line belongs to, and moves past their marks.
std::size_t BlockBuilder::matchContainers(LineCursor& cursor) const
{
    std::size_t matched = 1;
    for (; matched < m_containers.size(); ++matched) {
        const Container& container = m_containers[matched];
        if (container.kind == Kind::Quote) {
            if (cursor.indentation() >= codeIndentation || !cursor.text().startsWith(u'>'))
                break;
            cursor.skipText(1);
            cursor.skipColumns(1);
        } else if (container.kind == Kind::Item) {
            // An item that began with an empty line ends at the next.
            const bool isEmpty = container.blocks.isEmpty() && matched + 1 == m_containers.size() &&
                                 m_leaf.kind == Leaf::Kind::None;
            if (cursor.isBlank() ? isEmpty : cursor.indentation() < container.contentIndentation)
                break;
            cursor.skipColumns(container.contentIndentation);
        }
    }
    return matched;
}

/// Gives the line to a leaf block that goes on whatever the line says; false if it has to be looked at.
bool BlockBuilder::continueLeaf(LineCursor& cursor)
{
    switch (m_leaf.kind) {
    case Leaf::Kind::Fence:
        if (cursor.indentation() < codeIndentation && isClosingFence(cursor.text(), m_leaf.fence)) {
            append({MarkdownCode{m_leaf.info, m_leaf.text, true}});
            m_leaf = {};
        } else {
            cursor.skipColumns(m_leaf.indentation);
            if (std::exchange(m_leaf.hasLines, true))
                m_leaf.text += u'\n';
            cursor.appendRest(m_leaf.text);
        }
        m_afterBlankLine = false;
        return true;
    case Leaf::Kind::IndentedCode:
        if (cursor.indentation() < codeIndentation && !cursor.isBlank())
            return false;
        cursor.skipColumns(codeIndentation);
        m_leaf.text += u'\n';
        cursor.appendRest(m_leaf.text);
        m_afterBlankLine = cursor.isBlank();
        return true;
    case Leaf::Kind::Maths:
        return !cursor.isBlank() && continueMaths(cursor.text());
    default:
        return false;
    }
}

bool BlockBuilder::continueMaths(QStringView line)
{
    if (openingFence(line) || headingLine(line))
        return false;
    const qsizetype end = line.indexOf(m_leaf.mathsEnd);
    appendLeafLine(end < 0 ? line : line.first(end + 2));
    if (end < 0)
        return true;
    if (const auto source = displayMaths(m_leaf.text)) {
        append({MarkdownMaths{source->toString()}});
        m_leaf = {};
    }
    const QStringView rest = line.sliced(end + 2).trimmed();
    if (m_leaf.kind == Leaf::Kind::Maths)
        m_leaf.kind = Leaf::Kind::Paragraph;
    if (!rest.isEmpty()) {
        m_leaf.kind = Leaf::Kind::Paragraph;
        appendLeafLine(rest);
    }
    return true;
}

bool BlockBuilder::openBlocks(LineCursor& cursor, std::size_t matched)
{
    const bool mayBeLazy = m_leaf.kind == Leaf::Kind::Paragraph;
    while (!cursor.isBlank()) {
        const bool inParagraph = m_leaf.kind == Leaf::Kind::Paragraph && matched == m_containers.size();
        if (cursor.indentation() >= codeIndentation) {
            const bool inTable = m_leaf.kind == Leaf::Kind::Table && matched == m_containers.size();
            if ((mayBeLazy && !m_containerOpened) || inTable)
                return false;
            return openCode(cursor, matched);
        }
        if (cursor.text().startsWith(u'>') && !isDeepest()) {
            closeTo(matched);
            cursor.skipText(1);
            cursor.skipColumns(1);
            m_containers.emplace_back(Kind::Quote);
            ++m_depth;
        } else if (openLeaf(cursor, matched, inParagraph)) {
            return true;
        } else if (!openItem(cursor, matched, inParagraph)) {
            return false;
        }
        m_containerOpened = true;
        matched = m_containers.size();
    }
    return false;
}

bool BlockBuilder::openLeaf(LineCursor& cursor, std::size_t matched, bool inParagraph)
{
    const QStringView line = cursor.text();
    if (const auto heading = headingLine(line)) {
        closeTo(matched);
        append({MarkdownHeading{heading->level, m_inlines->parse(heading->text, m_definitions)}});
        return true;
    }
    if (const auto fence = openingFence(line)) {
        closeTo(matched);
        m_leaf.kind = Leaf::Kind::Fence;
        m_leaf.fence = {fence->mark, fence->length, {}};
        m_leaf.info = unescaped(fence->info);
        m_leaf.indentation = cursor.indentation();
        return true;
    }
    if (inParagraph && (endParagraphAsHeading(line) || endParagraphAsTable(line)))
        return true;
    if (isRuleLine(line)) {
        closeTo(matched);
        append({MarkdownRule{}});
        return true;
    }
    return openMaths(line, matched);
}

bool BlockBuilder::openCode(LineCursor& cursor, std::size_t matched)
{
    closeTo(matched);
    cursor.skipColumns(codeIndentation);
    m_leaf.kind = Leaf::Kind::IndentedCode;
    cursor.appendRest(m_leaf.text);
    return true;
}

bool BlockBuilder::openMaths(QStringView line, std::size_t matched)
{
    if (const auto source = displayMaths(line)) {
        closeTo(matched);
        append({MarkdownMaths{source->toString()}});
        return true;
    }
    const QStringView end = multilineMathsEnd(line);
    if (end.isNull())
        return false;
    closeTo(matched);
    m_leaf.kind = Leaf::Kind::Maths;
    m_leaf.mathsEnd = end;
    appendLeafLine(line);
    return true;
}

bool BlockBuilder::openItem(LineCursor& cursor, std::size_t matched, bool inParagraph)
{
    const auto marker = listMarker(cursor.text());
    if (!marker || isDeepest())
        return false;
    const bool isEmpty = cursor.text().sliced(marker->length).trimmed().isEmpty();
    if (inParagraph && (isEmpty || (marker->ordered && marker->start != 1)))
        return false;
    const bool continues = matched > 1 && m_containers[matched - 1].kind == Kind::List &&
                           m_containers[matched - 1].marker.ordered == marker->ordered &&
                           m_containers[matched - 1].marker.delimiter == marker->delimiter;
    closeTo(matched, continues);
    if (!continues) {
        Container list(Kind::List);
        list.list.ordered = marker->ordered;
        list.list.start = marker->start;
        list.marker = *marker;
        m_containers.push_back(std::move(list));
    }
    Container item(Kind::Item);
    item.contentIndentation = cursor.indentation() + marker->length;
    cursor.skipText(marker->length);
    const int space = cursor.indentation();
    // More space than four belongs to code inside the item.
    const int width = isEmpty || space > codeIndentation ? 1 : space;
    item.contentIndentation += width;
    cursor.skipColumns(width);
    m_containers.push_back(std::move(item));
    ++m_depth;
    return true;
}

bool BlockBuilder::endParagraphAsHeading(QStringView line)
{
    const int level = underlineLevel(line);
    if (level == 0)
        return false;
    const QStringView text =
        m_definitionsKnown ? LinkDefinitions().take(m_leaf.text) : m_definitions.take(m_leaf.text);
    if (text.isEmpty())
        return false;
    append({MarkdownHeading{level, m_inlines->parse(text.trimmed(), m_definitions)}});
    m_leaf = {};
    return true;
}

bool BlockBuilder::endParagraphAsTable(QStringView line)
{
    const auto columns = delimiterRow(line);
    if (!columns)
        return false;
    const QString header = m_leaf.text.sliced(m_leaf.lastLine);
    const QStringList cells = tableCells(header);
    if (cells.size() != columns->size())
        return false;
    m_leaf.text.truncate(qMax<qsizetype>(m_leaf.lastLine - 1, 0));
    closeLeaf();
    m_leaf.kind = Leaf::Kind::Table;
    m_leaf.table.columns = *columns;
    for (const QString& cell : cells)
        m_leaf.table.header.append(m_inlines->parse(cell, m_definitions));
    return true;
}

void BlockBuilder::addText(LineCursor& cursor, std::size_t matched)
{
    if (cursor.isBlank())
        return endBlankLine(matched);
    const bool isOpen = matched == m_containers.size();
    if (m_leaf.kind == Leaf::Kind::Paragraph)
        return appendLeafLine(cursor.text()); // even where the marks of its containers are missing
    if (isOpen && m_leaf.kind == Leaf::Kind::Table)
        return addRow(cursor.text());
    closeTo(matched);
    m_leaf.kind = Leaf::Kind::Paragraph;
    appendLeafLine(cursor.text());
}

void BlockBuilder::endBlankLine(std::size_t matched)
{
    while (m_containers.size() > matched)
        closeContainer();
    closeLeaf();
    m_afterBlankLine = m_containers.back().kind != Kind::Quote && !m_containerOpened;
}

void BlockBuilder::addRow(QStringView line)
{
    QList<MarkdownText> row;
    for (const QString& cell : tableCells(line)) {
        if (row.size() == m_leaf.table.columns.size())
            break;
        row.append(m_inlines->parse(cell, m_definitions));
    }
    m_leaf.table.rows.append(std::move(row));
}

} // namespace varnel
