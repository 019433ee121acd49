#include "markdown/Markdown.h"

#include "markdown/BlockBuilder.h"
#include "markdown/InlineParser.h"
#include "markdown/MarkdownLines.h"

namespace varnel {

namespace {

QList<MarkdownBlock> build(QStringView text, BlockBuilder& builder)
{
    takeWholeLines(text, [&builder](QStringView line) { builder.addLine(line); });
    if (!text.isEmpty())
        builder.addLine(withoutLineEnd(text));
    builder.close();
    return builder.takeBlocks();
}

void collectCode(const QList<MarkdownBlock>& blocks, QList<MarkdownCode>& found)
{
    for (const MarkdownBlock& block : blocks) {
        if (const auto* const code = std::get_if<MarkdownCode>(&block.content)) {
            found.append(*code);
        } else if (const auto* const quote = std::get_if<MarkdownQuote>(&block.content)) {
            collectCode(quote->blocks, found);
        } else if (const auto* const list = std::get_if<MarkdownList>(&block.content)) {
            for (const MarkdownItem& item : list->items)
                collectCode(item.blocks, found);
        }
    }
}

} // namespace

QList<MarkdownBlock> parseMarkdown(QStringView text)
{
    InlineParser inlines;
    BlockBuilder builder(inlines);
    QList<MarkdownBlock> blocks = build(text, builder);
    if (builder.definitions().isEmpty() || !inlines.hasUnknownReference())
        return blocks;
    // Some text may refer to a definition that came after it.
    BlockBuilder again(inlines, builder.definitions());
    return build(text, again);
}

QList<MarkdownCode> codeBlocks(const QList<MarkdownBlock>& blocks)
{
    QList<MarkdownCode> found;
    collectCode(blocks, found);
    return found;
}

QList<MarkdownCode> codeBlocks(QStringView text)
{
    return codeBlocks(parseMarkdown(text));
}

} // namespace varnel
