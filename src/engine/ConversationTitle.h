#pragma once

#include <QString>

namespace varnel {

/// The title that a conversation takes from its first prompt: the beginning with its white space folded, at
/// most 48 characters as a reader counts them, cut at a word where there is one.
QString titleFromPrompt(const QString& prompt);

/// The title of a conversation that was read from a file, in one line of at most 200 characters and never
/// empty.
QString importedTitle(const QString& title);

} // namespace varnel
