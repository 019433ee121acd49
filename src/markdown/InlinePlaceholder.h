// What the inline parser hands back of the encoder's text.
#pragma once

#include "markdown/InlineEncoder.h"

#include <md4c.h>

namespace varnel {

struct InlinePlaceholder
{
    std::size_t piece = 0;  ///< index into InlineEncoder::pieces()
    std::size_t length = 0; ///< bytes that the placeholder takes
};

bool beginsPlaceholder(std::string_view bytes);
InlinePlaceholder readPlaceholder(std::string_view bytes);

/// The text of a character reference; its source when it is none that is known.
QString characterText(std::string_view bytes);

/// A link as it was written, or as its definition has it.
MarkdownLink linkFrom(const MD_ATTRIBUTE& destination, const MD_ATTRIBUTE& title,
                      const std::vector<InlinePiece>& pieces);

} // namespace varnel
