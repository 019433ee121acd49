#include "ui/transcript/MessageRows.h"
#include "markdown/Markdown.h"
#include "ui/transcript/RowBuilder.h"
#include "ui/transcript/RowLayout.h"

namespace varnel {

namespace {

QString errorText(const TranscriptMessage& message)
{
    if (message.errorDetail.isEmpty())
        return message.error;
    return message.error + QChar(QChar::LineSeparator) + message.errorDetail;
}

} // namespace

MessageRows::MessageRows() = default;
MessageRows::~MessageRows() = default;

int MessageRows::update(const TranscriptMessage& message, bool showsThinking)
{
    const bool grows = m_isBuilt && m_stream && message.streaming && showsThinking == m_showsThinking &&
                       message.thinking.isEmpty() == m_thinking.isEmpty() && message.steps == m_steps &&
                       (!showsThinking || message.thinking == m_thinking);
    m_thinking = message.thinking;
    m_showsThinking = showsThinking;
    m_steps = message.steps;
    if (grows && message.content.startsWith(m_stream->text()))
        return updateTail(message);
    return rebuild(message, showsThinking);
}

const QList<MarkdownBlock>& MessageRows::readBlocks(const TranscriptMessage& message)
{
    if (message.streaming) {
        if (!m_stream)
            m_stream = std::make_unique<MarkdownStream>();
        m_stream->setText(message.content);
        return m_stream->blocks();
    }
    m_stream.reset();
    m_blocks = parseMarkdown(message.content);
    return m_blocks;
}

int MessageRows::rebuild(const TranscriptMessage& message, bool showsThinking)
{
    Rows fresh;
    RowBuilder builder(fresh, 0, 0);
    if (message.role == TranscriptRole::User) {
        if (!message.content.isEmpty() || message.chips.isEmpty())
            builder.addBubble(message.content);
        if (!message.chips.isEmpty())
            builder.addSimple(RowKind::Chips, 8);
        if (!message.error.isEmpty())
            builder.addSimple(RowKind::Error, 12, errorText(message));
        builder.addSimple(RowKind::Actions, 0);
    } else {
        if (!message.thinking.isEmpty()) {
            builder.addSimple(RowKind::Thinking, 0);
            if (showsThinking)
                builder.addThinking(message.thinking);
        }
        for (qsizetype i = 0; i < message.steps.size(); ++i)
            builder.addStep(message.steps[i], i == 0 ? 4 : 0);
        readBlocks(message);
        m_starts.clear();
        build(fresh, message, 0, {static_cast<int>(fresh.size()), 0});
    }
    m_blocks.clear(); // the rows share what they need of it
    m_isBuilt = true;
    return replaceFrom(0, std::move(fresh));
}

int MessageRows::updateTail(const TranscriptMessage& message)
{
    m_stream->setText(message.content);
    m_stream->blocks();
    const qsizetype kept = m_finished;
    const Start start = m_starts[static_cast<std::size_t>(kept)];
    m_starts.resize(static_cast<std::size_t>(kept));
    Rows fresh;
    build(fresh, message, kept, start);
    return replaceFrom(start.row, std::move(fresh));
}

void MessageRows::build(Rows& rows, const TranscriptMessage& message, qsizetype first, Start start)
{
    const QList<MarkdownBlock>& blocks = m_stream ? m_stream->blocks() : m_blocks;
    RowBuilder builder(rows, start.row, start.group);
    if (start.row < count())
        builder.continueCode(m_rows[static_cast<std::size_t>(start.row)].code);
    for (qsizetype i = first; i < blocks.size(); ++i) {
        m_starts.push_back({start.row + static_cast<int>(builder.added()), builder.nextGroup()});
        builder.addBlock(blocks[i]);
    }
    m_starts.push_back({start.row + static_cast<int>(builder.added()), builder.nextGroup()});
    m_finished = m_stream ? m_stream->finishedCount() : blocks.size();
    if (message.waitingSince && blocks.isEmpty() && message.thinking.isEmpty())
        builder.addSimple(RowKind::Waiting, 0);
    if (!message.error.isEmpty())
        builder.addSimple(RowKind::Error, 12, errorText(message));
    if (message.unfinished)
        builder.addSimple(RowKind::Unfinished, 4);
    builder.addSimple(RowKind::Actions, 4);
}

int MessageRows::replaceFrom(int from, Rows fresh)
{
    const auto start = static_cast<std::size_t>(from);
    std::size_t same = 0;
    while (same < fresh.size() && start + same < m_rows.size() &&
           m_rows[start + same].looksLike(fresh[same])) {
        // It looks the same, but what it is part of may have grown.
        m_rows[start + same].code = fresh[same].code;
        m_rows[start + same].table = fresh[same].table;
        ++same;
    }
    const auto changed = static_cast<int>(start + same);
    m_rows.resize(start + same);
    for (; same < fresh.size(); ++same)
        m_rows.push_back(std::move(fresh[same]));
    return changed;
}

} // namespace varnel
