#include "markdown/MarkdownBlock.h"

namespace varnel {

// Blocks contain blocks: equality can only be spelled out once all of them are known.
bool MarkdownQuote::operator==(const MarkdownQuote&) const = default;
bool MarkdownItem::operator==(const MarkdownItem&) const = default;
bool MarkdownList::operator==(const MarkdownList&) const = default;
bool MarkdownBlock::operator==(const MarkdownBlock&) const = default;

} // namespace varnel
