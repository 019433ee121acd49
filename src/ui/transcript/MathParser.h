#pragma once

#include "ui/transcript/MathSymbols.h"

#include <QList>
#include <QString>

#include <memory>
#include <optional>
#include <variant>
#include <vector>

namespace varnel {

struct MathNode;
/// A row of a formula, from left to right.
using MathList = std::vector<MathNode>;

/// How the letters of a part are set.
enum class MathLetters : quint8 { Normal, Upright, Bold, Italic, Sans, Typewriter };

struct MathGlyph
{
    MathSymbol symbol;
    MathLetters letters = MathLetters::Normal;
};
struct MathText ///< words, with their spaces
{
    QString text;
    MathLetters letters = MathLetters::Upright;
};
struct MathGap
{
    qreal width = 0; ///< in eighteenths of an em
};
struct MathGroup
{
    MathList list;
};
struct MathFraction
{
    MathList above;
    MathList below;
    bool hasRule = true;
    bool isDelimited = false;    ///< in parentheses: a binomial coefficient
    std::optional<bool> isLarge; ///< set where the formula says so itself
};
struct MathRoot
{
    MathList degree;
    MathList list;
};
struct MathAccent
{
    QString accent; ///< empty for a rule
    bool isBelow = false;
    MathList list;
};
struct MathFence ///< delimiters as high as what they hold
{
    QList<QString> delimiters; ///< one more than parts
    std::vector<MathList> parts;
    qreal height = 0; ///< in ems; 0 for as high as the parts
    MathClass kind = MathClass::Ordinary;
};
struct MathStack ///< something above or below something else
{
    MathList base;
    MathList above;
    MathList below;
};
struct MathTable
{
    std::vector<std::vector<MathList>> rows;
    QString opening;
    QString closing;
    QString alignment; ///< "l", "c" or "r" for each column, the last one for those that follow
    bool isSmall = false;
    bool isAligned = false; ///< no space between a right and a left column
    bool isDisplayed = false;
};
struct MathStyleChange
{
    bool isDisplay = false;
};

struct MathNode
{
    std::variant<MathGlyph, MathText, MathGap, MathGroup, MathFraction, MathRoot, MathAccent, MathFence,
                 MathStack, MathTable, MathStyleChange>
        content;
    MathList superscript;
    MathList subscript;
    std::optional<bool> limits; ///< set where the formula says itself where its limits stand
};

/// Longest source that is set, in characters, and how deep its parts may lie in each other.
constexpr qsizetype longestFormula = 4000;
constexpr int deepestFormula = 40;

/// The formula of a TeX source without its delimiters; nothing if any of it is outside what is set here: a
/// formula is set whole or shown as its source.
std::optional<MathList> parseMaths(const QString& source);

} // namespace varnel
