// What the highlighter knows of each language.
#pragma once

#include <QString>

#include <vector>

namespace varnel {

enum class CodeShape : quint8 {
    Program, ///< words, strings, numbers and comments
    Keyed,   ///< as before; a string or word before a colon is a key
    Markup,  ///< tags with attributes
    Diff,    ///< whole lines, by their first character
};

struct CodeSyntax
{
    std::vector<QLatin1String> names;
    CodeShape shape = CodeShape::Program;
    std::vector<QLatin1String> keywords; ///< sorted
    std::vector<QLatin1String> lineComments;
    QLatin1String blockOpen;
    QLatin1String blockClose;
    QLatin1String quotes;         ///< characters that begin and end a string within a line
    QLatin1String multilineQuote; ///< one that may span lines, `
    bool tripleQuotes = false;
    bool ignoresCase = false;
    bool variables = false; ///< $name
};

/// The syntax of a language by one of its names or file extensions, in any case; null if it is not known.
const CodeSyntax* codeSyntax(QStringView name);

} // namespace varnel
