#pragma once

#include "markdown/MarkdownBlock.h"

#include <QStringView>

namespace varnel {

/// The blocks of a Markdown text: CommonMark with GitHub's tables, task lists, strikethrough and bare links,
/// and formulas between \( \), \[ \], $$ $$ and $ $. HTML is text like any other. Never fails, takes time in
/// proportion to the text and calls nothing outside: no image or link is followed.
QList<MarkdownBlock> parseMarkdown(QStringView text);

/// All code blocks, also those inside lists and quotes, in the order of the text.
QList<MarkdownCode> codeBlocks(const QList<MarkdownBlock>& blocks);
QList<MarkdownCode> codeBlocks(QStringView text);

} // namespace varnel
