// How the builder's open blocks become finished ones.

#include "markdown/BlockBuilder.h"
#include "markdown/InlineParser.h"

namespace varnel {

bool BlockBuilder::isDeepest() const
{
    return m_depth >= MarkdownBlock::maximumDepth;
}

void BlockBuilder::closeTo(std::size_t count, bool forItem)
{
    closeLeaf();
    while (m_containers.size() > count)
        closeContainer();
    if (m_containers.back().kind == Kind::List && !forItem)
        closeContainer();
    if (!m_afterBlankLine)
        return;
    // A blank line between two items, or between two blocks of an item, sets the list apart.
    Container& container = m_containers.back();
    if (container.kind == Kind::List && !container.list.items.isEmpty())
        container.list.tight = false;
    else if (container.kind == Kind::Item && !container.blocks.isEmpty())
        m_containers[m_containers.size() - 2].list.tight = false;
}

void BlockBuilder::closeContainer()
{
    closeLeaf();
    Container container = std::move(m_containers.back());
    m_containers.pop_back();
    if (container.kind != Kind::List)
        --m_depth;
    switch (container.kind) {
    case Kind::Quote:
        return append({MarkdownQuote{std::move(container.blocks)}});
    case Kind::List:
        return append({std::move(container.list)});
    case Kind::Item:
        m_containers.back().list.items.append({container.checked, std::move(container.blocks)});
        return;
    case Kind::Document:
        return;
    }
}

void BlockBuilder::closeLeaf()
{
    switch (m_leaf.kind) {
    case Leaf::Kind::None:
        return;
    case Leaf::Kind::Paragraph:
    case Leaf::Kind::Maths:
        closeParagraph();
        break;
    case Leaf::Kind::Fence:
        append({MarkdownCode{m_leaf.info, m_leaf.text, false}});
        break;
    case Leaf::Kind::IndentedCode: {
        qsizetype end = m_leaf.text.size();
        for (qsizetype at = end; at > 0 && m_leaf.text[at - 1].isSpace(); --at) {
            if (m_leaf.text[at - 1] == u'\n')
                end = at - 1;
        }
        append({MarkdownCode{{}, m_leaf.text.first(end), true}});
        break;
    }
    case Leaf::Kind::Table:
        append({m_leaf.table});
        break;
    }
    m_leaf = {};
}

void BlockBuilder::closeParagraph()
{
    QStringView text =
        m_definitionsKnown ? LinkDefinitions().take(m_leaf.text) : m_definitions.take(m_leaf.text);
    text = text.trimmed();
    if (const auto checked = takeTaskMark(text))
        m_containers.back().checked = checked;
    if (text.isEmpty())
        return;
    if (const auto source = displayMaths(text))
        append({MarkdownMaths{source->toString()}});
    else
        append({MarkdownParagraph{m_inlines->parse(text, m_definitions)}});
}

/// The mark "[ ]" or "[x]" of a task, if that is how the paragraph and with it a list item begins.
std::optional<bool> BlockBuilder::takeTaskMark(QStringView& text) const
{
    const Container& item = m_containers.back();
    if (item.kind != Kind::Item || !item.blocks.isEmpty() || text.size() < 4 || text[0] != u'[' ||
        text[2] != u']' || !text[3].isSpace())
        return std::nullopt;
    const QChar mark = text[1];
    if (mark != u' ' && mark != u'x' && mark != u'X')
        return std::nullopt;
    text = text.sliced(4).trimmed();
    return mark != u' ';
}

void BlockBuilder::appendLeafLine(QStringView line)
{
    if (!m_leaf.text.isEmpty())
        m_leaf.text += u'\n';
    m_leaf.lastLine = m_leaf.text.size();
    m_leaf.text += line;
}

void BlockBuilder::append(MarkdownBlock block)
{
    m_containers.back().blocks.append(std::move(block));
}

void BlockBuilder::close()
{
    while (m_containers.size() > 1)
        closeContainer();
    closeLeaf();
}

QList<MarkdownBlock> BlockBuilder::takeBlocks()
{
    return std::exchange(m_containers.front().blocks, {});
}

} // namespace varnel
