// What the commands of a formula stand for.
#pragma once

#include <QString>

#include <optional>

namespace varnel {

/// What a symbol does in a formula; the space around it follows from its neighbours.
enum class MathClass : quint8 { Ordinary, Operator, Binary, Relation, Opening, Closing, Punctuation };

struct MathSymbol
{
    QString text;
    MathClass kind = MathClass::Ordinary;
    bool isLarge = false;   ///< drawn larger where a formula stands alone: a sum, an integral
    bool hasLimits = false; ///< what is above and below it stands there, not beside it
    bool isUpright = true;

    bool operator==(const MathSymbol&) const = default;
};

/// The symbol of a command, without its backslash; nothing for one that is not known.
std::optional<MathSymbol> mathSymbol(const QString& command);
/// How a character that stands for itself is set.
MathSymbol mathCharacter(char32_t character);
/// The width of a command that is only space, in eighteenths of an em.
std::optional<qreal> mathSpace(const QString& command);
/// The character that a command puts above its argument; empty for none.
QString mathAccent(const QString& command);
/// The delimiter of a command or character, for example "⟨" for "\langle"; "." is an empty one.
std::optional<QString> mathDelimiter(const QString& token);
/// A letter in another alphabet: "mathbb", "mathcal", "mathfrak"; itself where there is none.
QString inMathAlphabet(const QString& alphabet, char32_t letter);

} // namespace varnel
