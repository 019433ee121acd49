#include "ui/transcript/CodeHighlighter.h"
#include "ui/transcript/CodeSyntax.h"

#include <algorithm>

namespace varnel {
namespace {

/// What a line can begin inside of.
enum State : quint8 { Plain, BlockComment, TripleDouble, TripleSingle, Multiline, Tag };

bool isWordStart(QChar c)
{
    return c.isLetter() || c == QLatin1Char('_') || c == QLatin1Char('@');
}

bool isWordPart(QChar c)
{
    return c.isLetterOrNumber() || c == QLatin1Char('_');
}

/// Reads one line from left to right.
class LineScanner
{
public:
    LineScanner(const CodeSyntax& syntax, QStringView line, quint8& state)
        : m_syntax(syntax)
        , m_line(line)
        , m_state(state)
    {}

    std::vector<CodeToken> scan()
    {
        if (m_syntax.shape == CodeShape::Diff) {
            scanDiff();
            return std::move(m_tokens);
        }
        while (m_at < m_line.size()) {
            if (m_state != Plain && m_state != Tag)
                finishOpen();
            else if (m_syntax.shape == CodeShape::Markup)
                scanMarkup();
            else
                scanProgram();
        }
        return std::move(m_tokens);
    }

private:
    bool at(QLatin1String text) const { return !text.isEmpty() && m_line.sliced(m_at).startsWith(text); }
    QChar peek(qsizetype ahead = 0) const
    {
        return m_at + ahead < m_line.size() ? m_line.at(m_at + ahead) : QChar();
    }
    void add(qsizetype start, CodeTokenKind kind)
    {
        if (m_at > start)
            m_tokens.push_back({static_cast<int>(start), static_cast<int>(m_at - start), kind});
    }

    void scanDiff()
    {
        m_at = m_line.size();
        if (m_line.startsWith(QLatin1String("@@")))
            add(0, CodeTokenKind::Name);
        else if (m_line.startsWith(QLatin1Char('+')))
            add(0, CodeTokenKind::Inserted);
        else if (m_line.startsWith(QLatin1Char('-')))
            add(0, CodeTokenKind::Removed);
    }

    /// Goes on with a comment or string that was begun before, to its end if that is on this line.
    void finishOpen()
    {
        const qsizetype start = m_at;
        const QLatin1String end = m_state == BlockComment   ? m_syntax.blockClose
                                  : m_state == TripleDouble ? QLatin1String("\"\"\"")
                                  : m_state == TripleSingle ? QLatin1String("'''")
                                                            : m_syntax.multilineQuote;
        const CodeTokenKind kind = m_state == BlockComment ? CodeTokenKind::Comment : CodeTokenKind::String;
        const qsizetype found = m_line.indexOf(end, m_at);
        m_at = found < 0 ? m_line.size() : found + end.size();
        if (found >= 0)
            m_state = Plain;
        add(start, kind);
    }

    bool openMultiline()
    {
        const qsizetype start = m_at;
        if (at(m_syntax.blockOpen))
            m_state = BlockComment;
        else if (m_syntax.tripleQuotes && at(QLatin1String("\"\"\"")))
            m_state = TripleDouble;
        else if (m_syntax.tripleQuotes && at(QLatin1String("'''")))
            m_state = TripleSingle;
        else if (at(m_syntax.multilineQuote))
            m_state = Multiline;
        else
            return false;
        const CodeTokenKind kind = m_state == BlockComment ? CodeTokenKind::Comment : CodeTokenKind::String;
        m_at += m_state == BlockComment ? m_syntax.blockOpen.size() : m_state == Multiline ? 1 : 3;
        add(start, kind);
        return true;
    }

    bool lineComment()
    {
        for (const QLatin1String& mark : m_syntax.lineComments) {
            // A number sign within a word is no comment: $#, a#b, http://x#y.
            if (!at(mark) || (mark == QLatin1String("#") && m_at > 0 && !m_line.at(m_at - 1).isSpace()))
                continue;
            const qsizetype start = m_at;
            m_at = m_line.size();
            add(start, CodeTokenKind::Comment);
            return true;
        }
        return false;
    }

    void scanString()
    {
        const qsizetype start = m_at;
        const QChar quote = m_line.at(m_at++);
        while (m_at < m_line.size() && m_line.at(m_at) != quote)
            m_at += m_line.at(m_at) == QLatin1Char('\\') ? 2 : 1;
        m_at = std::min(m_at + 1, m_line.size());
        const bool key = m_syntax.shape == CodeShape::Keyed && colonFollows();
        add(start, key ? CodeTokenKind::Name : CodeTokenKind::String);
    }

    bool colonFollows() const
    {
        qsizetype next = m_at;
        while (next < m_line.size() && m_line.at(next).isSpace())
            ++next;
        return next < m_line.size() &&
               (m_line.at(next) == QLatin1Char(':') || m_line.at(next) == QLatin1Char('='));
    }

    void scanNumber()
    {
        const qsizetype start = m_at;
        while (m_at < m_line.size() && (isWordPart(m_line.at(m_at)) || m_line.at(m_at) == QLatin1Char('.')))
            ++m_at;
        add(start, CodeTokenKind::Number);
    }

    void scanWord()
    {
        const qsizetype start = m_at++;
        const bool dashes = m_syntax.shape == CodeShape::Keyed;
        while (m_at < m_line.size() &&
               (isWordPart(m_line.at(m_at)) || (dashes && m_line.at(m_at) == QLatin1Char('-'))))
            ++m_at;
        const QStringView word = m_line.sliced(start, m_at - start);
        if (m_syntax.shape == CodeShape::Keyed && colonFollows())
            add(start, CodeTokenKind::Name);
        else if (isKeyword(word))
            add(start, CodeTokenKind::Keyword);
        else if (peek() == QLatin1Char('('))
            add(start, CodeTokenKind::Name);
    }

    bool isKeyword(QStringView word) const
    {
        const QString lower = m_syntax.ignoresCase ? word.toString().toLower() : QString();
        const QStringView looked = m_syntax.ignoresCase ? QStringView(lower) : word;
        const auto& list = m_syntax.keywords;
        const auto found = std::lower_bound(list.begin(), list.end(), looked,
                                            [](QLatin1String a, QStringView b) { return a.compare(b) < 0; });
        return found != list.end() && looked == *found;
    }

    void scanProgram()
    {
        if (openMultiline() || lineComment())
            return;
        const QChar c = m_line.at(m_at);
        if (c.unicode() < 0x80 && m_syntax.quotes.contains(c)) {
            scanString();
        } else if (c.isDigit()) {
            scanNumber();
        } else if (isWordStart(c) || (c == QLatin1Char('#') && isWordStart(peek(1)))) {
            scanWord();
        } else if (m_syntax.variables && c == QLatin1Char('$') && isWordPart(peek(1))) {
            const qsizetype start = m_at++;
            while (m_at < m_line.size() && isWordPart(m_line.at(m_at)))
                ++m_at;
            add(start, CodeTokenKind::Name);
        } else {
            ++m_at;
        }
    }

    void scanMarkup()
    {
        if (m_state == Plain) {
            if (openMultiline())
                return;
            if (peek() != QLatin1Char('<')) {
                ++m_at;
                return;
            }
            const qsizetype start = m_at++;
            while (m_at < m_line.size() && (isWordPart(peek()) || QLatin1String("/!?:-").contains(peek())))
                ++m_at;
            add(start, CodeTokenKind::Keyword);
            m_state = Tag;
            return;
        }
        const qsizetype start = m_at;
        const QChar c = peek();
        if (c == QLatin1Char('>')) {
            ++m_at;
            add(start, CodeTokenKind::Keyword);
            m_state = Plain;
        } else if (c == QLatin1Char('"') || c == QLatin1Char('\'')) {
            scanString();
        } else if (isWordStart(c)) {
            while (m_at < m_line.size() && (isWordPart(peek()) || QLatin1String("-:.").contains(peek())))
                ++m_at;
            add(start, CodeTokenKind::Name);
        } else {
            ++m_at;
        }
    }

    const CodeSyntax& m_syntax;
    QStringView m_line;
    quint8& m_state;
    qsizetype m_at = 0;
    std::vector<CodeToken> m_tokens;
};

} // namespace

CodeHighlighter::CodeHighlighter(QStringView language)
    : m_syntax(codeSyntax(language))
{}

std::vector<CodeToken> CodeHighlighter::tokens(QStringView line, quint8& state) const
{
    if (!m_syntax)
        return {};
    return LineScanner(*m_syntax, line, state).scan();
}

} // namespace varnel
