#pragma once

#include "ui/transcript/MathParser.h"

#include <QString>

#include <optional>

namespace varnel {

/// Part of a formula is none that can be set. Thrown and caught by the parser alone.
struct UnsettableMaths
{};

/// The commands, characters and words of a formula's source, one after the other.
class MathTokens
{
public:
    explicit MathTokens(const QString& source)
        : m_source(source)
    {}

    bool atEnd() const { return m_at >= m_source.size(); }
    /// The next token without taking it: a command with its backslash, or a character. Empty at the end.
    QString peek();
    QString take();
    bool takeIf(QLatin1String token);
    /// Throws UnsettableMaths unless it comes next.
    void expect(QLatin1String token);
    /// The argument of \text and the like, as it stands. Throws UnsettableMaths when it has markup of its
    /// own.
    QString takeWords();

private:
    void skipSpace();
    QChar takeEscaped();

    QString m_source;
    qsizetype m_at = 0;
};

/// What \begin opens.
struct MathEnvironment
{
    const char* opening;
    const char* closing;
    const char* alignment;
    bool isSmall;
    bool isAligned;
    bool isDisplayed;
};
std::optional<MathEnvironment> mathEnvironment(const QString& name);
/// The letters of a command for symbols, and of one for words.
std::optional<MathLetters> mathLetters(const QString& command);
std::optional<MathLetters> mathWordLetters(const QString& command);

} // namespace varnel
