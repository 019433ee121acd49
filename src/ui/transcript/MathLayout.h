// Formulas, set by ourselves: fractions, roots, scripts, sums with limits, matrices, delimiters and accents.
#pragma once

#include "markdown/MarkdownBlock.h"
#include "ui/transcript/MathBox.h"

#include <memory>
#include <vector>

namespace varnel {

/// Whether a formula stands on a line of its own or within one.
enum class MathPlace : quint8 { Displayed, Inline };

/// Lays a formula out beside letters of this font. Null for a source that holds anything that is not set
/// here, or a letter that no font has: it is to be shown as it is. May be called on any thread.
std::shared_ptr<const MathBox> layOutMaths(const QString& source, const QFont& font, MathPlace place);

/// The formulas of a text that can be set and are at most this wide.
std::vector<InlineFormula> formulasOf(const MarkdownText& text, const QFont& font, qreal widest);

} // namespace varnel
