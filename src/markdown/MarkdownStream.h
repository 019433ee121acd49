#pragma once

#include "markdown/BlockBuilder.h"
#include "markdown/MarkdownBlock.h"

#include <QString>

#include <memory>
#include <vector>

namespace varnel {

/// The blocks of a text that grows at its end, as a reply does while it arrives. At any moment they are those
/// that parseMarkdown() gives for the text so far, with one exception: until finish(), a definition of a link
/// reference serves only the text after it.
///
/// A block that another one follows is finished: it stays as it is, with its index and revision, while the
/// text grows. Only what is open is looked at again, so that a piece costs the same after a short text and a
/// long one.
class MarkdownStream
{
public:
    MarkdownStream();
    ~MarkdownStream();
    MarkdownStream(MarkdownStream&&) noexcept;
    MarkdownStream& operator=(MarkdownStream&&) noexcept;

    const QString& text() const { return m_text; }

    void append(QStringView piece);
    /// Makes `text` the whole text. Where it only continues the old one this is append(); otherwise all
    /// starts anew.
    void setText(const QString& text);
    /// The text is complete: all blocks are finished, and definitions serve the whole text.
    void finish();

    /// The blocks so far. Keep no copy of the list while the text grows: a shared list is copied at the next
    /// change.
    const QList<MarkdownBlock>& blocks();
    /// How many of the blocks, from the first, no further append() changes.
    qsizetype finishedCount() const { return m_finishedCount; }
    /// A number that differs whenever the block at this index of blocks() does, within the life of this
    /// stream.
    quint64 revision(qsizetype index) const { return m_revisions[static_cast<std::size_t>(index)]; }

private:
    void restart();
    void replaceFrom(qsizetype index, QList<MarkdownBlock> blocks);

    std::unique_ptr<InlineParser> m_inlines;
    std::unique_ptr<BlockBuilder> m_builder;
    QString m_text;
    qsizetype m_taken = 0; // how much of the text the builder has, in whole lines
    QList<MarkdownBlock> m_blocks;
    std::vector<quint64> m_revisions;
    quint64 m_lastRevision = 0;
    qsizetype m_finishedCount = 0;
    bool m_outdated = false; // the open blocks are not yet those of the text
    bool m_complete = false;
};

} // namespace varnel
