// Blocks as text for the clipboard, for searching and for reading aloud.
#pragma once

#include "markdown/MarkdownBlock.h"

namespace varnel {

/// The text without markup. Lists keep their bullets and numbers, cells are separated by tabs, formulas keep
/// dollar signs around their source. Blocks are separated by an empty line; nothing follows the last.
QString plainText(const MarkdownText& text);
QString plainText(const MarkdownBlock& block);
QString plainText(const QList<MarkdownBlock>& blocks);

/// The same as HTML: text fully escaped, links only where isOpenableLink() holds, and nothing that loads
/// anything.
QString htmlText(const MarkdownText& text);
QString htmlText(const MarkdownBlock& block);
QString htmlText(const QList<MarkdownBlock>& blocks);

} // namespace varnel
