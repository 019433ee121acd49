#include "base/JsonSyntax.h"

#include "base/Text.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace varnel {

namespace {

constexpr std::size_t depthLimit = 1024; // as deep as the parser goes

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}
bool isHexDigit(char c)
{
    return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

struct Problem
{
    std::size_t offset = 0;
    QString text;
};

/// A strict walk over a JSON text (RFC 8259) that stops at the first thing that does not belong there.
class SyntaxWalk
{
public:
    explicit SyntaxWalk(std::string_view text)
        : m_text(text)
    {}

    std::optional<Problem> run()
    {
        skipBlanks();
        if (atEnd())
            return problem("the text is empty");
        value();
        while (!m_problem && !m_open.empty())
            afterValue();
        if (!m_problem) {
            skipBlanks();
            if (!atEnd())
                unexpected("nothing more");
        }
        return m_problem;
    }

private:
    bool atEnd() const { return m_at >= m_text.size(); }
    char here() const { return atEnd() ? '\0' : m_text[m_at]; }

    void skipBlanks()
    {
        while (!atEnd() && (here() == ' ' || here() == '\t' || here() == '\n' || here() == '\r'))
            ++m_at;
    }

    std::optional<Problem> problem(const char* text)
    {
        if (!m_problem)
            m_problem = Problem{m_at, QString::fromLatin1(text)};
        return m_problem;
    }

    void unexpected(const char* expected)
    {
        if (m_problem)
            return;
        QString found = QStringLiteral("the end");
        if (!atEnd()) {
            const auto byte = static_cast<unsigned char>(here());
            if (byte > 0x20 && byte < 0x7f)
                found = QStringLiteral("\"%1\"").arg(QLatin1Char(here()));
            else
                found = QStringLiteral("byte 0x%1").arg(uint(byte), 2, 16, QLatin1Char('0'));
        }
        m_problem =
            Problem{m_at, QStringLiteral("expected %1, found %2").arg(QLatin1String(expected), found)};
    }

    /// One value, or the opening of an object or array up to its first simple value; the depth limit bounds
    /// the stack.
    void value()
    {
        skipBlanks();
        switch (here()) {
        case '{':
        case '[':
            open();
            break;
        case '"':
            string();
            break;
        case 't':
            word("true");
            break;
        case 'f':
            word("false");
            break;
        case 'n':
            word("null");
            break;
        default:
            if (here() == '-' || isDigit(here()))
                number();
            else
                unexpected("a value");
        }
    }

    void open()
    {
        const char closing = here() == '{' ? '}' : ']';
        if (m_open.size() >= depthLimit) {
            problem("nested too deeply");
            return;
        }
        ++m_at;
        skipBlanks();
        if (here() == closing) {
            ++m_at;
            return;
        }
        m_open.push_back(closing);
        if (closing == '}')
            key();
        else
            value();
    }

    void key()
    {
        skipBlanks();
        if (here() != '"') {
            unexpected("a key");
            return;
        }
        string();
        skipBlanks();
        if (m_problem || here() != ':') {
            unexpected("\":\"");
            return;
        }
        ++m_at;
        value();
    }

    void afterValue()
    {
        skipBlanks();
        if (here() == ',') {
            ++m_at;
            if (m_open.back() == '}')
                key();
            else
                value();
        } else if (here() == m_open.back()) {
            ++m_at;
            m_open.pop_back();
        } else {
            unexpected(m_open.back() == '}' ? "\",\" or \"}\"" : "\",\" or \"]\"");
        }
    }

    void word(std::string_view expected)
    {
        if (m_text.substr(m_at, expected.size()) == expected)
            m_at += expected.size();
        else
            unexpected("a value");
    }

    void digits()
    {
        if (!isDigit(here()))
            unexpected("a digit");
        while (isDigit(here()))
            ++m_at;
    }

    void number()
    {
        if (here() == '-')
            ++m_at;
        if (here() == '0')
            ++m_at;
        else
            digits();
        if (here() == '.') {
            ++m_at;
            digits();
        }
        if (here() == 'e' || here() == 'E') {
            ++m_at;
            if (here() == '+' || here() == '-')
                ++m_at;
            digits();
        }
    }

    void string()
    {
        ++m_at;
        while (!atEnd() && here() != '"') {
            if (static_cast<unsigned char>(here()) < 0x20) {
                problem("a control character inside a string");
                return;
            }
            if (here() == '\\')
                escape();
            else
                ++m_at;
            if (m_problem)
                return;
        }
        if (atEnd())
            problem("the string does not end");
        else
            ++m_at;
    }

    void escape()
    {
        ++m_at;
        if (here() == 'u') {
            for (std::size_t i = 1; i <= 4; ++i) {
                if (m_at + i >= m_text.size() || !isHexDigit(m_text[m_at + i])) {
                    problem("an escape that is not four hexadecimal digits");
                    return;
                }
            }
            m_at += 5;
        } else if (!atEnd() && std::string_view("\"\\/bfnrt").find(here()) != std::string_view::npos) {
            ++m_at;
        } else {
            problem("an unknown escape");
        }
    }

    std::string_view m_text;
    std::size_t m_at = 0;
    std::vector<char> m_open;
    std::optional<Problem> m_problem;
};

/// Where the first sequence begins that is not UTF-8 (RFC 3629), or the length of the text.
std::size_t firstInvalidUtf8(std::string_view text)
{
    // Whole blocks first, which goes a hundred times as fast; a block may end within a character.
    constexpr std::size_t blockSize = 4096;
    std::size_t at = 0;
    while (at + blockSize <= text.size()) {
        const QByteArrayView block(text.data() + at, qsizetype(blockSize));
        const auto whole = static_cast<std::size_t>(withoutCutCharacter(block).size());
        if (whole == 0 || !isUtf8(text.substr(at, whole)))
            break;
        at += whole;
    }
    while (at < text.size()) {
        const auto lead = static_cast<unsigned char>(text[at]);
        const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        if (at + length > text.size() || !isUtf8(text.substr(at, length)))
            return at;
        at += length;
    }
    return at;
}

struct Position
{
    qsizetype line = 1;
    qsizetype column = 1;
};

Position positionOf(std::string_view text, std::size_t offset)
{
    const std::string_view before = text.substr(0, offset);
    Position position;
    position.line += std::count(before.begin(), before.end(), '\n');
    const std::size_t lineStart = before.rfind('\n') + 1; // npos + 1 is 0
    for (const char c : before.substr(lineStart)) {
        if ((static_cast<unsigned char>(c) & 0xC0U) != 0x80)
            ++position.column;
    }
    return position;
}

/// The code unit of the escape `\uXXXX` that begins at `at`; nothing if none stands there.
std::optional<unsigned> escapedUnit(std::string_view text, std::size_t at)
{
    if (at + 6 > text.size() || text[at] != '\\' || text[at + 1] != 'u')
        return std::nullopt;
    unsigned unit = 0;
    for (std::size_t i = at + 2; i < at + 6; ++i) {
        const char c = text[i];
        if (!isHexDigit(c))
            return std::nullopt;
        unit = unit * 16 + static_cast<unsigned>(isDigit(c) ? c - '0' : (c | 0x20) - 'a' + 10);
    }
    return unit;
}

bool isHighSurrogate(unsigned unit)
{
    return unit >= 0xD800 && unit < 0xDC00;
}
bool isLowSurrogate(unsigned unit)
{
    return unit >= 0xDC00 && unit < 0xE000;
}

} // namespace

QString describeJsonSyntaxProblem(std::string_view text)
{
    std::optional<Problem> problem = SyntaxWalk(text).run();
    if (!isUtf8(text)) {
        const std::size_t offset = firstInvalidUtf8(text);
        if (!problem || offset < problem->offset)
            problem = Problem{offset, QStringLiteral("bytes that are not UTF-8")};
    }
    if (!problem)
        return QStringLiteral("not valid JSON (a number that is too large)");
    const Position position = positionOf(text, problem->offset);
    return QStringLiteral("not valid JSON (line %1, column %2: %3)")
        .arg(QString::number(position.line), QString::number(position.column), problem->text);
}

std::optional<std::string> replaceEscapedLoneSurrogates(std::string_view text)
{
    std::optional<std::string> repaired;
    for (std::size_t at = text.find('\\'); at != std::string_view::npos; at = text.find('\\', at)) {
        const std::optional<unsigned> unit = escapedUnit(text, at);
        if (!unit) {
            at += 2;
            continue;
        }
        if (isHighSurrogate(*unit)) {
            const std::optional<unsigned> next = escapedUnit(text, at + 6);
            if (next && isLowSurrogate(*next)) {
                at += 12;
                continue;
            }
        }
        if (isHighSurrogate(*unit) || isLowSurrogate(*unit)) {
            if (!repaired)
                repaired.emplace(text);
            repaired->replace(at, 6, "\\ufffd");
        }
        at += 6;
    }
    return repaired;
}

} // namespace varnel
