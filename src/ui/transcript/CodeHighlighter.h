#pragma once

#include <QString>

#include <vector>

namespace varnel {

struct CodeSyntax;

enum class CodeTokenKind : quint8 { Keyword, String, Number, Comment, Name, Inserted, Removed };

/// A coloured stretch of a line of code, in UTF-16 units from the line's start.
struct CodeToken
{
    int start = 0;
    int length = 0;
    CodeTokenKind kind = CodeTokenKind::Keyword;

    bool operator==(const CodeToken&) const = default;
};

/// Tells keywords, strings, comments and numbers apart, line by line.
///
/// It knows the shape of the languages people ask about, not their grammars: it looks at each character once,
/// never fails, and what it carries from one line to the next fits in a byte. That makes it quick enough to
/// run on exactly the lines that are shown.
class CodeHighlighter
{
public:
    /// No language: nothing is coloured.
    CodeHighlighter() = default;
    /// @param language the first word of a fence's info string, or a file name's extension.
    explicit CodeHighlighter(QStringView language);

    bool isActive() const { return m_syntax != nullptr; }

    /// The tokens of a line. `state` is what the line before left, 0 for the first, and becomes what this one
    /// leaves.
    std::vector<CodeToken> tokens(QStringView line, quint8& state) const;

private:
    const CodeSyntax* m_syntax = nullptr;
};

} // namespace varnel
