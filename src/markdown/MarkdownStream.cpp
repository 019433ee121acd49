#include "markdown/MarkdownStream.h"

#include "markdown/InlineParser.h"
#include "markdown/Markdown.h"
#include "markdown/MarkdownLines.h"

namespace varnel {

MarkdownStream::MarkdownStream()
{
    restart();
}

MarkdownStream::~MarkdownStream() = default;
MarkdownStream::MarkdownStream(MarkdownStream&&) noexcept = default;
MarkdownStream& MarkdownStream::operator=(MarkdownStream&&) noexcept = default;

void MarkdownStream::restart()
{
    m_inlines = std::make_unique<InlineParser>();
    m_builder = std::make_unique<BlockBuilder>(*m_inlines);
    m_text.clear();
    m_taken = 0;
    m_finishedCount = 0;
    m_outdated = true;
    m_complete = false;
}

void MarkdownStream::append(QStringView piece)
{
    if (piece.isEmpty())
        return;
    if (m_complete)
        return setText(m_text + piece.toString());
    m_text += piece;
    m_outdated = true;
    QStringView untaken = QStringView(m_text).sliced(m_taken);
    takeWholeLines(untaken, [this](QStringView line) { m_builder->addLine(line); });
    m_taken = m_text.size() - untaken.size();
    QList<MarkdownBlock> finished = m_builder->takeBlocks();
    if (finished.isEmpty())
        return;
    const qsizetype begin = m_finishedCount;
    m_finishedCount += finished.size();
    replaceFrom(begin, std::move(finished));
}

void MarkdownStream::setText(const QString& text)
{
    if (!m_complete && text.startsWith(m_text))
        return append(QStringView(text).sliced(m_text.size()));
    if (m_complete && text == m_text)
        return;
    const QString whole = text; // it may be our own
    restart();
    append(whole);
}

void MarkdownStream::finish()
{
    if (m_complete)
        return;
    m_complete = true;
    m_outdated = false;
    const QStringView rest = QStringView(m_text).sliced(m_taken);
    if (!rest.isEmpty())
        m_builder->addLine(withoutLineEnd(rest));
    m_builder->close();
    replaceFrom(m_finishedCount, m_builder->takeBlocks());
    if (!m_builder->definitions().isEmpty() && m_inlines->hasUnknownReference())
        replaceFrom(0, parseMarkdown(m_text));
    m_finishedCount = m_blocks.size();
}

const QList<MarkdownBlock>& MarkdownStream::blocks()
{
    if (!m_outdated)
        return m_blocks;
    m_outdated = false;
    BlockBuilder closed = *m_builder;
    const QStringView rest = QStringView(m_text).sliced(m_taken);
    if (!rest.isEmpty())
        closed.addLine(withoutLineEnd(rest));
    closed.close();
    replaceFrom(m_finishedCount, closed.takeBlocks());
    return m_blocks;
}

/// Makes the blocks from `index` on these; a block that stays the same keeps its revision.
void MarkdownStream::replaceFrom(qsizetype index, QList<MarkdownBlock> blocks)
{
    const qsizetype count = index + blocks.size();
    m_blocks.reserve(count);
    for (MarkdownBlock& block : blocks) {
        if (index == m_blocks.size()) {
            m_blocks.append(std::move(block));
            m_revisions.push_back(++m_lastRevision);
        } else if (m_blocks[index] != block) {
            m_blocks[index] = std::move(block);
            m_revisions[static_cast<std::size_t>(index)] = ++m_lastRevision;
        }
        ++index;
    }
    m_blocks.resize(count);
    m_revisions.resize(static_cast<std::size_t>(count));
}

} // namespace varnel
