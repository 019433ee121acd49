#include "ui/transcript/MathTokens.h"

#include <QHash>

#include <algorithm>

namespace varnel {

void MathTokens::skipSpace()
{
    while (!atEnd() && m_source.at(m_at).isSpace())
        ++m_at;
}

QString MathTokens::peek()
{
    skipSpace();
    if (atEnd())
        return {};
    qsizetype end = m_at + 1;
    const auto isLetter = [this](qsizetype at) {
        const char16_t c = at < m_source.size() ? m_source.at(at).unicode() : u'\0';
        return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
    };
    if (m_source.at(m_at) == u'\\' && isLetter(end)) {
        while (isLetter(end))
            ++end;
    } else if (m_source.at(m_at) == u'\\' || m_source.at(m_at).isHighSurrogate()) {
        ++end;
    }
    return m_source.sliced(m_at, std::min(end, m_source.size()) - m_at);
}

QString MathTokens::take()
{
    const QString token = peek();
    m_at += token.size();
    return token;
}

bool MathTokens::takeIf(QLatin1String token)
{
    if (peek() != token)
        return false;
    static_cast<void>(take());
    return true;
}

void MathTokens::expect(QLatin1String token)
{
    if (!takeIf(token))
        throw UnsettableMaths();
}

QChar MathTokens::takeEscaped()
{
    const QChar next = ++m_at < m_source.size() ? m_source.at(m_at) : QChar();
    if (QStringView(u", ;:").contains(next))
        return u' ';
    if (!QStringView(u"%$#&_{}").contains(next))
        throw UnsettableMaths();
    return next;
}

QString MathTokens::takeWords()
{
    expect(QLatin1String("{"));
    int depth = 1;
    QString words;
    for (; !atEnd(); ++m_at) {
        const QChar c = m_source.at(m_at);
        if (c == u'$')
            throw UnsettableMaths();
        if (c == u'\\') {
            words += takeEscaped();
            continue;
        }
        if (c == u'{' && ++depth > 0)
            continue;
        if (c == u'}' && --depth == 0) {
            ++m_at;
            return words;
        }
        if (c != u'}')
            words += c.isSpace() || c == u'~' ? QChar(u' ') : c;
    }
    throw UnsettableMaths();
}

std::optional<MathEnvironment> mathEnvironment(const QString& name)
{
    static const QHash<QString, MathEnvironment> environments{
        {QStringLiteral("matrix"), {"", "", "c", false, false, false}},
        {QStringLiteral("pmatrix"), {"(", ")", "c", false, false, false}},
        {QStringLiteral("bmatrix"), {"[", "]", "c", false, false, false}},
        {QStringLiteral("Bmatrix"), {"{", "}", "c", false, false, false}},
        {QStringLiteral("vmatrix"), {"|", "|", "c", false, false, false}},
        {QStringLiteral("Vmatrix"), {"\u2016", "\u2016", "c", false, false, false}},
        {QStringLiteral("smallmatrix"), {"", "", "c", true, false, false}},
        {QStringLiteral("cases"), {"{", "", "l", false, false, false}},
        {QStringLiteral("array"), {"", "", "", false, false, false}},
        {QStringLiteral("aligned"), {"", "", "rl", false, true, true}},
        {QStringLiteral("align"), {"", "", "rl", false, true, true}},
        {QStringLiteral("align*"), {"", "", "rl", false, true, true}},
        {QStringLiteral("split"), {"", "", "rl", false, true, true}},
        {QStringLiteral("gathered"), {"", "", "c", false, false, true}},
        {QStringLiteral("gather"), {"", "", "c", false, false, true}},
        {QStringLiteral("gather*"), {"", "", "c", false, false, true}},
        {QStringLiteral("equation"), {"", "", "c", false, false, true}},
        {QStringLiteral("equation*"), {"", "", "c", false, false, true}},
    };
    const auto found = environments.find(name);
    return found == environments.end() ? std::nullopt : std::optional(*found);
}

std::optional<MathLetters> mathLetters(const QString& command)
{
    static const QHash<QString, MathLetters> fonts{
        {QStringLiteral("mathrm"), MathLetters::Upright},    {QStringLiteral("mathbf"), MathLetters::Bold},
        {QStringLiteral("boldsymbol"), MathLetters::Bold},   {QStringLiteral("bm"), MathLetters::Bold},
        {QStringLiteral("mathit"), MathLetters::Italic},     {QStringLiteral("mathsf"), MathLetters::Sans},
        {QStringLiteral("mathtt"), MathLetters::Typewriter},
    };
    const auto found = fonts.find(command);
    return found == fonts.end() ? std::nullopt : std::optional(*found);
}

std::optional<MathLetters> mathWordLetters(const QString& command)
{
    static const QHash<QString, MathLetters> fonts{
        {QStringLiteral("text"), MathLetters::Upright},      {QStringLiteral("textrm"), MathLetters::Upright},
        {QStringLiteral("mbox"), MathLetters::Upright},      {QStringLiteral("textbf"), MathLetters::Bold},
        {QStringLiteral("textit"), MathLetters::Italic},     {QStringLiteral("textsf"), MathLetters::Sans},
        {QStringLiteral("texttt"), MathLetters::Typewriter},
    };
    const auto found = fonts.find(command);
    return found == fonts.end() ? std::nullopt : std::optional(*found);
}

} // namespace varnel
