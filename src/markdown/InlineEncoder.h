#pragma once

#include "markdown/LinkDefinitions.h"

#include <QStringView>

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace varnel {

/// A stretch of a leaf block's text whose contents are no markup. The parser sees a placeholder in its stead.
struct InlinePiece
{
    enum class Kind { Code, Maths, DisplayMaths, Link, WebLink, MailLink, Literal, Definition };

    Kind kind = Kind::Literal;
    QStringView source;      ///< as written, with its delimiters
    QStringView contents;    ///< without them
    MarkdownLink definition; ///< what a Definition stands for
};

/// Turns the text of a leaf block into UTF-8 on one line for the inline parser: code spans, formulas and bare
/// addresses become placeholders, line ends become single characters. Takes linear time for any text.
class InlineEncoder
{
public:
    /// White space for the parser that means a soft and a hard break here.
    static constexpr char softBreak = '\v';
    static constexpr char hardBreak = '\f';

    /// What stands around the number of a piece. To the rules of emphasis the first pair are letters, the
    /// second pair, for what begins and ends with a delimiter, punctuation. The text itself never contains
    /// them.
    static constexpr std::string_view wordBegin = "\xef\xb7\x90";        // U+FDD0
    static constexpr std::string_view wordEnd = "\xef\xb7\x91";          // U+FDD1
    static constexpr std::string_view punctuationBegin = "\xea\xa1\xb4"; // U+A874
    static constexpr std::string_view punctuationEnd = "\xea\xa1\xb5";   // U+A875

    /// True when the text holds none of the characters that could mean anything: it needs no encoding at all.
    static bool isPlain(QStringView text);

    /// @param text must live as long as the pieces are used.
    void encode(QStringView text, const LinkDefinitions& definitions);

    const std::string& bytes() const { return m_bytes; }
    const std::vector<InlinePiece>& pieces() const { return m_pieces; }
    /// Definitions, in the parser's syntax, of all the links that the text refers to.
    const std::string& references() const { return m_references; }
    /// Whether any markup is left for the parser.
    bool hasMarkup() const { return m_hasMarkup; }
    /// Whether a bracket may refer to a definition that is not known.
    bool hasUnknownReference() const { return m_hasUnknownReference; }

private:
    void encodeCharacter(const LinkDefinitions& definitions);
    void encodeMarkup(const LinkDefinitions& definitions);
    void appendCodePoint();
    void appendByte(QChar character);
    void appendPiece(InlinePiece piece);
    void encodeLineEnd();
    void encodeBackslash();
    void encodeBackticks();
    void encodeDollars();
    void encodeAngleBracket();
    void encodeWebAddress();
    void encodeMailAddress();
    void endBracket(const LinkDefinitions& definitions);
    bool takeMaths(InlinePiece::Kind kind, QStringView closing);
    void findBackticks();

    QStringView m_text;
    qsizetype m_position = 0;
    qsizetype m_pieceEnd = 0; // where the last placeholder's source ended
    std::string m_bytes;
    std::string m_references;
    std::vector<InlinePiece> m_pieces;
    std::unordered_map<qsizetype, std::vector<qsizetype>> m_backticks; // positions of the runs of a length
    std::unordered_set<std::string> m_referredLabels;
    qsizetype m_bracket = -1; // where the innermost open bracket's text begins
    std::size_t m_bracketByte = 0;
    bool m_backticksFound = false;
    bool m_hasMarkup = false;
    bool m_hasUnknownReference = false;
    qsizetype m_noDollars = 0; // from here on no formula in these delimiters closes
    qsizetype m_noParenthesis = 0;
    qsizetype m_noBracket = 0;
};

} // namespace varnel
