// The parts of a formula that grow with what they hold: roots, accents, delimiters and tables.
#include "ui/transcript/MathSetter.h"

#include <algorithm>
#include <numeric>

namespace varnel {

MathBox MathSetter::setContent(const MathRoot& root, Style style) const
{
    const MathBox inner = set(root.list, style);
    const qreal em = m_fonts.em(style.depth);
    const qreal rule = m_fonts.rule(style.depth);
    const qreal top = -(std::max(inner.ascent, 0.5 * em) + 0.16 * em + rule / 2);
    const qreal foot = inner.descent + 0.06 * em;
    const qreal height = foot - top;
    MathBox box;
    qreal x = 0;
    if (!root.degree.empty()) {
        const MathBox degree = set(root.degree, {MathFonts::deepest, false});
        box.add(degree, {0, foot - 0.58 * height});
        x = std::max(0.0, degree.width - 0.22 * em);
    }
    const qreal hook = foot - std::min(0.5 * height, 0.62 * em);
    const qreal right = x + 0.56 * em + inner.width + 0.1 * em;
    box.strokes.push_back(
        {QPolygonF({QPointF(x, hook + 0.07 * em), QPointF(x + 0.12 * em, hook), QPointF(x + 0.3 * em, foot),
                    QPointF(x + 0.54 * em, top), QPointF(right, top)}),
         rule});
    box.add(inner, {x + 0.58 * em, 0});
    box.ascent = std::max(box.ascent, -top + rule);
    box.descent = std::max(box.descent, foot);
    box.width = right + 0.04 * em;
    return box;
}

MathBox MathSetter::setContent(const MathAccent& accent, Style style) const
{
    const MathBox inner = set(accent.list, style);
    const qreal em = m_fonts.em(style.depth);
    MathBox box;
    box.add(inner, {});
    if (accent.accent.isEmpty()) {
        const qreal rule = m_fonts.rule(style.depth);
        const qreal y = accent.isBelow ? inner.descent + 0.12 * em : -inner.ascent - 0.12 * em - rule;
        box.rules.emplace_back(0, y, inner.width, rule);
        box.ascent = std::max(box.ascent, -y + rule);
        box.descent = std::max(box.descent, y + rule);
        return box;
    }
    QFont font = m_fonts.font(MathLetters::Upright, style.depth);
    if (accent.accent == QStringLiteral("→"))
        font.setPixelSize(std::max(1, qRound(font.pixelSize() * 0.7)));
    const MathBox sign = MathFonts::box(accent.accent, font);
    const QRectF ink = MathFonts::ink(accent.accent, font);
    // Leaning letters have their middle a little to the right up there.
    const qreal x = inner.width / 2 + 0.05 * em - ink.center().x();
    const qreal y = -inner.ascent - 0.1 * em - ink.bottom();
    box.letters.push_back({accent.accent, font, {std::max(x, -ink.left()), y}, 1});
    box.ascent = std::max(box.ascent, -(y + ink.top()));
    box.width = std::max(box.width, std::max(x, 0.0) + sign.width);
    return box;
}

qreal MathSetter::reachOf(const MathBox& box, int depth) const
{
    return std::max(box.ascent - m_fonts.axis(depth), box.descent + m_fonts.axis(depth));
}

MathBox MathSetter::delimiter(const QString& text, qreal reach, int depth) const
{
    if (text.isEmpty())
        return {};
    const QFont font = m_fonts.font(MathLetters::Upright, depth);
    MathBox box = MathFonts::box(text, font);
    const QRectF ink = MathFonts::ink(text, font);
    const qreal stretch = std::max(1.0, 2 * reach / std::max(1.0, ink.height()));
    const qreal half = stretch * ink.height() / 2;
    const qreal axis = m_fonts.axis(depth);
    box.letters.front().stretch = stretch;
    box.letters.front().at.setY(-axis - stretch * ink.center().y());
    box.ascent = half + axis;
    box.descent = half - axis;
    return box;
}

MathBox MathSetter::fenced(const QString& opening, const MathBox& box, const QString& closing,
                           int depth) const
{
    const qreal reach = reachOf(box, depth);
    const qreal gap = 0.06 * m_fonts.em(depth);
    MathBox whole = delimiter(opening, reach, depth);
    whole.add(box, {whole.width + gap, 0});
    whole.add(delimiter(closing, reach, depth), {whole.width + gap, 0});
    return whole;
}

MathBox MathSetter::setContent(const MathFence& fence, Style style) const
{
    const int depth = style.depth;
    if (fence.parts.empty())
        return delimiter(fence.delimiters.front(), fence.height * m_fonts.em(depth) / 2, depth);
    std::vector<MathBox> parts;
    qreal reach = 0;
    for (const MathList& part : fence.parts) {
        parts.push_back(set(part, style));
        reach = std::max(reach, reachOf(parts.back(), depth));
    }
    const qreal gap = 0.06 * m_fonts.em(depth);
    MathBox box = delimiter(fence.delimiters.front(), reach, depth);
    for (std::size_t i = 0; i < parts.size(); ++i) {
        box.add(parts[i], {box.width + gap, 0});
        box.add(delimiter(fence.delimiters.at(static_cast<qsizetype>(i) + 1), reach, depth),
                {box.width + gap, 0});
    }
    return box;
}

MathBox MathSetter::setContent(const MathTable& table, Style style) const
{
    const Style inner = table.isSmall ? script(style) : Style{style.depth, table.isDisplayed};
    const qreal em = m_fonts.em(inner.depth);
    std::vector<std::vector<MathBox>> rows;
    std::vector<qreal> widths;
    for (const std::vector<MathList>& cells : table.rows) {
        rows.emplace_back();
        for (std::size_t column = 0; column < cells.size(); ++column) {
            MathBox cell = set(cells[column], inner);
            // What follows "&" in an aligned equation continues its left side.
            if (table.isAligned && column % 2 == 1) {
                MathBox moved;
                moved.add(cell, {5 * em / 18, 0});
                cell = std::move(moved);
            }
            if (column >= widths.size())
                widths.push_back(0);
            widths[column] = std::max(widths[column], cell.width);
            rows.back().push_back(std::move(cell));
        }
    }
    const auto gapAfter = [&](std::size_t column) {
        if (!table.isAligned)
            return (table.isSmall ? 0.6 : 0.9) * em;
        return column % 2 == 0 ? 0.0 : 2 * em;
    };
    MathBox box;
    qreal y = 0;
    for (const std::vector<MathBox>& cells : rows) {
        qreal ascent = 0.7 * em;
        qreal descent = 0.3 * em;
        for (const MathBox& cell : cells) {
            ascent = std::max(ascent, cell.ascent);
            descent = std::max(descent, cell.descent);
        }
        qreal x = 0;
        for (std::size_t column = 0; column < cells.size(); ++column) {
            const auto named = static_cast<qsizetype>(table.isAligned ? column % 2 : column);
            const QChar alignment = table.alignment.isEmpty()
                                        ? QChar(u'c')
                                        : table.alignment.at(std::min(named, table.alignment.size() - 1));
            const qreal rest = widths[column] - cells[column].width;
            const qreal shift = alignment == u'l' ? 0 : alignment == u'r' ? rest : rest / 2;
            box.add(cells[column], {x + shift, y + ascent});
            x += widths[column] + gapAfter(column);
        }
        y += ascent + descent + (table.isSmall ? 0.1 : table.isDisplayed ? 0.5 : 0.3) * em;
    }
    y -= (table.isSmall ? 0.1 : table.isDisplayed ? 0.5 : 0.3) * em;
    box.ascent = 0;
    box.descent = y;
    box.width = std::accumulate(widths.begin(), widths.end(), 0.0);
    for (std::size_t column = 0; column + 1 < widths.size(); ++column)
        box.width += gapAfter(column);
    MathBox centred;
    centred.ascent = y / 2 + m_fonts.axis(style.depth);
    centred.add(box, {0, -centred.ascent});
    return fenced(table.opening, centred, table.closing, style.depth);
}

} // namespace varnel
