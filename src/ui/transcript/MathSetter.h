#pragma once

#include "ui/transcript/MathFonts.h"

namespace varnel {

/// Turns the parts of a formula into boxes.
class MathSetter
{
public:
    struct Style
    {
        int depth = 0;          ///< of scripts
        bool isDisplay = false; ///< sums are large and have limits, fractions keep the size
    };

    explicit MathSetter(const QFont& beside)
        : m_fonts(beside)
    {}

    /// A row. Throws UnsettableBox when a letter has no shape.
    MathBox set(const MathList& list, Style style) const;

private:
    struct Part
    {
        MathBox box;
        MathClass kind = MathClass::Ordinary;
        bool isGap = false;
    };

    static Style script(Style style) { return {std::min(style.depth + 1, MathFonts::deepest), false}; }
    Part setNode(const MathNode& node, Style style) const;
    MathBox setNucleus(const MathNode& node, Style style) const;
    MathBox setContent(const MathGlyph& glyph, Style style) const;
    MathBox setContent(const MathText& text, Style style) const;
    MathBox setContent(const MathGap& gap, Style style) const;
    MathBox setContent(const MathGroup& group, Style style) const;
    MathBox setContent(const MathFraction& fraction, Style style) const;
    MathBox setContent(const MathRoot& root, Style style) const;
    MathBox setContent(const MathAccent& accent, Style style) const;
    MathBox setContent(const MathFence& fence, Style style) const;
    MathBox setContent(const MathStack& stack, Style style) const;
    MathBox setContent(const MathTable& table, Style style) const;
    MathBox setContent(const MathStyleChange& change, Style style) const;

    std::vector<std::vector<MathBox>> cellsOf(const MathTable& table, Style style) const;
    MathBox withScripts(const MathNode& node, const MathBox& base, Style style) const;
    MathBox withLimits(const MathBox& base, const MathList& above, const MathList& below, Style style) const;
    /// A delimiter that reaches `reach` above and below the axis.
    MathBox delimiter(const QString& text, qreal reach, int depth) const;
    MathBox fenced(const QString& opening, const MathBox& box, const QString& closing, int depth) const;
    qreal reachOf(const MathBox& box, int depth) const;

    MathFonts m_fonts;
};

} // namespace varnel
