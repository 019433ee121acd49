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
    m_taken = 0;
    m_finishedCount = 0;
    m_knownCode = -1;
    m_outdated = true;
    m_complete = false;
}

void MarkdownStream::append(QStringView piece)
{
    if (piece.isEmpty())
        return;
    if (m_complete)
        return setText(m_text + piece.toString());
    if (piece.contains(QChar::Null))
        return append(withoutNull(piece));
    const bool endsLine = m_text.endsWith(u'\r') || piece.contains(u'\n') || piece.contains(u'\r');
    m_text += piece;
    m_outdated = true;
    if (endsLine)
        takeLines();
}

/// Hands the builder the whole lines it does not have yet.
void MarkdownStream::takeLines()
{
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
    if (text.contains(QChar::Null))
        return setText(withoutNull(text));
    if (!m_complete && text.startsWith(m_text))
        return append(QStringView(text).sliced(m_text.size()));
    if (m_complete && text == m_text)
        return;
    m_text = text;
    restart();
    takeLines();
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
    const QStringView rest = QStringView(m_text).sliced(m_taken);
    if (extendCode(rest))
        return m_blocks;
    BlockBuilder closed = *m_builder;
    if (!rest.isEmpty())
        closed.addLine(withoutLineEnd(rest));
    closed.close();
    replaceFrom(m_finishedCount, closed.takeBlocks());
    const MarkdownCode* const code =
        m_blocks.isEmpty() ? nullptr : std::get_if<MarkdownCode>(&m_blocks.constLast().content);
    if (code && !code->closed)
        m_knownCode = m_builder->openCodeSize();
    return m_blocks;
}

/// Adds what came to a code block that is the open one already. It may be of any length, so it is not built
/// anew.
bool MarkdownStream::extendCode(QStringView line)
{
    if (m_knownCode < 0 || line.endsWith(u'\r'))
        return false;
    auto& code = std::get<MarkdownCode>(m_blocks.last().content);
    if (!m_builder->extendOpenCode(code, m_knownCode, line))
        return false;
    m_knownCode = m_builder->openCodeSize();
    m_revisions.back() = ++m_lastRevision;
    return true;
}

/// Makes the blocks from `index` on these; a block that stays the same keeps its revision.
void MarkdownStream::replaceFrom(qsizetype index, QList<MarkdownBlock> blocks)
{
    m_knownCode = -1;
    const qsizetype count = index + blocks.size();
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
