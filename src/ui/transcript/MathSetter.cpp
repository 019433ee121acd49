#include "ui/transcript/MathSetter.h"

#include <algorithm>

namespace varnel {

namespace {

/// Space between neighbours in eighteenths of an em, after the rules that mathematicians are used to: the
/// kind of the left one, then that of the right one, in the order of MathClass.
constexpr std::array<std::array<int, 7>, 7> spaces{{{0, 3, 4, 5, 0, 0, 0},
                                                    {3, 3, 0, 5, 0, 0, 0},
                                                    {4, 4, 0, 0, 4, 0, 0},
                                                    {5, 5, 0, 0, 5, 0, 0},
                                                    {0, 0, 0, 0, 0, 0, 0},
                                                    {0, 3, 4, 5, 0, 0, 0},
                                                    {3, 3, 0, 3, 3, 3, 3}}};

int spaceBetween(MathClass left, MathClass right, bool isScript)
{
    const int space = spaces[static_cast<std::size_t>(left)][static_cast<std::size_t>(right)];
    // Scripts are set tight, but for the names of functions.
    const bool isTight = left != MathClass::Operator && right != MathClass::Operator;
    return isScript && isTight ? 0 : space;
}

MathClass kindOf(const MathNode& node)
{
    if (const auto* const glyph = std::get_if<MathGlyph>(&node.content))
        return glyph->symbol.kind;
    if (const auto* const fence = std::get_if<MathFence>(&node.content))
        return fence->kind;
    if (const auto* const stack = std::get_if<MathStack>(&node.content);
        stack != nullptr && stack->base.size() == 1)
        return kindOf(stack->base.front());
    return MathClass::Ordinary;
}

const MathSymbol* symbolOf(const MathNode& node)
{
    const auto* const glyph = std::get_if<MathGlyph>(&node.content);
    return glyph == nullptr ? nullptr : &glyph->symbol;
}

} // namespace

MathBox MathSetter::set(const MathList& list, Style style) const
{
    std::vector<Part> parts;
    for (const MathNode& node : list) {
        if (const auto* const change = std::get_if<MathStyleChange>(&node.content)) {
            style = {0, change->isDisplay};
            continue;
        }
        parts.push_back(setNode(node, style));
    }
    // A sign that joins two things needs something on both sides; "-1" has a sign of its own.
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (parts[i].kind != MathClass::Binary)
            continue;
        const MathClass left = i == 0 ? MathClass::Opening : parts[i - 1].kind;
        const MathClass right = i + 1 == parts.size() ? MathClass::Closing : parts[i + 1].kind;
        const bool joins = (left == MathClass::Ordinary || left == MathClass::Closing) &&
                           right != MathClass::Relation && right != MathClass::Closing &&
                           right != MathClass::Punctuation;
        if (!joins)
            parts[i].kind = MathClass::Ordinary;
    }
    MathBox row;
    qreal x = 0;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (i > 0 && !parts[i].isGap && !parts[i - 1].isGap)
            x += spaceBetween(parts[i - 1].kind, parts[i].kind, style.depth > 0) * m_fonts.em(style.depth) /
                 18;
        row.add(parts[i].box, {x, 0});
        x += parts[i].box.width;
    }
    row.width = std::max(x, 0.0);
    return row;
}

MathSetter::Part MathSetter::setNode(const MathNode& node, Style style) const
{
    Part part;
    part.isGap = std::holds_alternative<MathGap>(node.content);
    part.kind = kindOf(node);
    part.box = withScripts(node, setNucleus(node, style), style);
    return part;
}

MathBox MathSetter::setNucleus(const MathNode& node, Style style) const
{
    return std::visit([this, style](const auto& content) { return setContent(content, style); },
                      node.content);
}

MathBox MathSetter::withLimits(const MathBox& base, const MathList& above, const MathList& below,
                               Style style) const
{
    const MathBox upper = above.empty() ? MathBox() : set(above, script(style));
    const MathBox lower = below.empty() ? MathBox() : set(below, script(style));
    const qreal gap = 0.14 * m_fonts.em(style.depth);
    const qreal width = std::max({base.width, upper.width, lower.width});
    MathBox box;
    box.add(base, {(width - base.width) / 2, 0});
    if (!above.empty())
        box.add(upper, {(width - upper.width) / 2, -(base.ascent + gap + upper.descent)});
    if (!below.empty())
        box.add(lower, {(width - lower.width) / 2, base.descent + gap + lower.ascent});
    box.width = width;
    return box;
}

MathBox MathSetter::withScripts(const MathNode& node, const MathBox& base, Style style) const
{
    if (node.superscript.empty() && node.subscript.empty())
        return base;
    const MathSymbol* const symbol = symbolOf(node);
    if (node.limits.value_or(style.isDisplay && symbol != nullptr && symbol->hasLimits))
        return withLimits(base, node.superscript, node.subscript, style);

    const MathBox upper = set(node.superscript, script(style));
    const MathBox lower = set(node.subscript, script(style));
    const qreal em = m_fonts.em(style.depth);
    const qreal small = m_fonts.em(script(style).depth);
    qreal rise = std::max({0.38 * em, base.ascent - 0.3 * small, upper.descent + 0.24 * em});
    qreal fall = std::max(0.16 * em, base.descent + 0.12 * small);
    if (!node.superscript.empty() && !node.subscript.empty()) {
        fall = std::max(fall, 0.22 * em);
        const qreal gap = rise - upper.descent - (lower.ascent - fall);
        if (gap < 0.14 * em)
            fall += 0.14 * em - gap;
    }
    // What follows an integral leans to its foot.
    const qreal lean = symbol != nullptr && symbol->isLarge && !symbol->hasLimits ? 0.22 * em : 0;
    MathBox box;
    box.add(base, {});
    const qreal x = base.width + 0.04 * em;
    if (!node.superscript.empty())
        box.add(upper, {x, -rise});
    if (!node.subscript.empty())
        box.add(lower, {x - lean, fall});
    box.width += 0.05 * em;
    return box;
}

MathBox MathSetter::setContent(const MathGlyph& glyph, Style style) const
{
    const MathSymbol& symbol = glyph.symbol;
    MathLetters letters = glyph.letters;
    if (letters == MathLetters::Normal && symbol.isUpright)
        letters = MathLetters::Upright;
    QFont font = m_fonts.font(letters, style.depth);
    if (!symbol.isLarge)
        return MathFonts::box(symbol.text, font);
    const qreal larger = !style.isDisplay ? 1.15 : symbol.hasLimits ? 1.5 : 1.8;
    font.setPixelSize(qRound(font.pixelSize() * larger));
    const MathBox sign = MathFonts::box(symbol.text, font);
    MathBox box;
    box.add(sign, {0, (sign.ascent - sign.descent) / 2 - m_fonts.axis(style.depth)});
    return box;
}

MathBox MathSetter::setContent(const MathText& text, Style style) const
{
    return MathFonts::box(text.text, m_fonts.font(text.letters, style.depth));
}

MathBox MathSetter::setContent(const MathGap& gap, Style style) const
{
    MathBox box;
    box.width = gap.width * m_fonts.em(style.depth) / 18;
    return box;
}

MathBox MathSetter::setContent(const MathGroup& group, Style style) const
{
    return set(group.list, style);
}

MathBox MathSetter::setContent(const MathStack& stack, Style style) const
{
    return withLimits(set(stack.base, style), stack.above, stack.below, style);
}

MathBox MathSetter::setContent(const MathStyleChange&, Style) const
{
    return {}; // it only changes what follows in its row
}

MathBox MathSetter::setContent(const MathFraction& fraction, Style style) const
{
    if (fraction.isLarge)
        style = {*fraction.isLarge ? 0 : 1, *fraction.isLarge};
    const Style part = style.isDisplay ? Style{style.depth, false} : script(style);
    const MathBox above = set(fraction.above, part);
    const MathBox below = set(fraction.below, part);
    const qreal em = m_fonts.em(style.depth);
    const qreal axis = m_fonts.axis(style.depth);
    const qreal rule = m_fonts.rule(style.depth);
    const qreal gap = (style.isDisplay ? 0.2 : 0.12) * em + rule / 2;
    const qreal width = std::max(above.width, below.width) + 0.16 * em;
    MathBox box;
    box.add(above, {(width - above.width) / 2, -(axis + gap + above.descent)});
    box.add(below, {(width - below.width) / 2, -axis + gap + below.ascent});
    if (fraction.hasRule)
        box.rules.emplace_back(0, -axis - rule / 2, width, rule);
    box.width = width;
    if (fraction.isDelimited)
        return fenced(QStringLiteral("("), box, QStringLiteral(")"), style.depth);
    MathBox spaced; // neighbouring fractions must not look like one
    spaced.add(box, {0.08 * em, 0});
    spaced.width += 0.08 * em;
    return spaced;
}

} // namespace varnel
