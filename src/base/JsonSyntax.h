#pragma once

#include <QString>

#include <optional>
#include <string>
#include <string_view>

namespace varnel {

/// Says what is wrong with a JSON text that did not parse, and where, for example
/// `not valid JSON (line 3, column 7: expected a value, found "}")`. Lines and columns count from 1, columns
/// in code points. The fast parser only says that something is wrong; this is the second look, taken on
/// failure.
QString describeJsonSyntaxProblem(std::string_view text);

/// The text with every escaped lone surrogate ("\ud800" without its other half) written as "\ufffd"; nothing
/// if there is none. The length does not change.
std::optional<std::string> replaceEscapedLoneSurrogates(std::string_view text);

} // namespace varnel
