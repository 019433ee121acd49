#pragma once

#include <QString>

namespace varnel {

/// The title that a conversation takes from its first prompt: the beginning with its white space folded, at
/// most 48 characters as a reader counts them, cut at a word where there is one.
QString titleFromPrompt(const QString& prompt);

} // namespace varnel
