#pragma once

#include "markdown/MarkdownStream.h"
#include "ui/transcript/TranscriptModel.h"
#include "ui/transcript/TranscriptRow.h"

#include <memory>
#include <vector>

namespace varnel {

/// The rows of one message, kept up to date while it grows: only what follows the last finished block is made
/// again.
class MessageRows
{
public:
    MessageRows();
    ~MessageRows();
    MessageRows(const MessageRows&) = delete;
    MessageRows& operator=(const MessageRows&) = delete;
    MessageRows(MessageRows&&) = delete;
    MessageRows& operator=(MessageRows&&) = delete;

    int count() const { return static_cast<int>(m_rows.size()); }
    TranscriptRow& row(int index) { return m_rows[static_cast<std::size_t>(index)]; }
    const TranscriptRow& row(int index) const { return m_rows[static_cast<std::size_t>(index)]; }

    /// Takes over the message and returns the first row that may look different now; count() if none does.
    /// @param showsThinking whether what the model thought is open.
    int update(const TranscriptMessage& message, bool showsThinking);

private:
    using Rows = std::vector<TranscriptRow>;

    /// Where the rows and groups of a block begin.
    struct Start
    {
        int row = 0;
        int group = 0;
    };

    int rebuild(const TranscriptMessage& message, bool showsThinking);
    int updateTail(const TranscriptMessage& message);
    /// Adds the rows of all blocks from `first` on and of what stands below them.
    void build(Rows& rows, const TranscriptMessage& message, qsizetype first, Start start);
    int replaceFrom(int from, Rows fresh);
    const QList<MarkdownBlock>& readBlocks(const TranscriptMessage& message);

    Rows m_rows;
    std::unique_ptr<MarkdownStream> m_stream; ///< while the message grows
    QList<MarkdownBlock> m_blocks;            ///< of a message that does not
    std::vector<Start> m_starts;              ///< of each block, and of what follows the last
    qsizetype m_finished = 0;                 ///< blocks whose rows stay
    QString m_thinking;
    bool m_showsThinking = false;
    QList<TranscriptStep> m_steps;
    bool m_isBuilt = false;
};

} // namespace varnel
