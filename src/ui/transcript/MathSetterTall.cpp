// The parts of a formula that grow with what they hold: roots, accents, delimiters and tables.
#include "ui/transcript/MathSetter.h"

#include <algorithm>

namespace varnel {

namespace {

/// How much of the room that a cell leaves in its column stands before it.
qreal shareBefore(const MathTable& table, std::size_t column)
{
    if (table.alignment.isEmpty())
        return 0.5;
    const auto index = static_cast<qsizetype>(table.isAligned ? column % 2 : column);
    const QChar alignment = table.alignment.at(std::min(index, table.alignment.size() - 1));
    return alignment == u'l' ? 0 : alignment == u'r' ? 1 : 0.5;
}

/// Where each column begins, and where the last one ends.
std::vector<qreal> leftsOf(const MathTable& table, const std::vector<qreal>& widths, qreal em)
{
    std::vector<qreal> lefts{0};
    for (std::size_t column = 0; column < widths.size(); ++column) {
        const qreal gap = !table.isAligned ? (table.isSmall ? 0.6 : 0.9) : column % 2 == 0 ? 0 : 2;
        lefts.push_back(lefts.back() + widths[column] + (column + 1 < widths.size() ? gap * em : 0));
    }
    return lefts;
}

} // namespace

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

std::vector<std::vector<MathBox>> MathSetter::cellsOf(const MathTable& table, Style style) const
{
    std::vector<std::vector<MathBox>> rows;
    for (const std::vector<MathList>& cells : table.rows) {
        rows.emplace_back();
        for (std::size_t column = 0; column < cells.size(); ++column) {
            // What follows "&" in an aligned equation continues its left side.
            const bool goesOn = table.isAligned && column % 2 == 1;
            MathBox cell;
            cell.add(set(cells[column], style), {goesOn ? 5 * m_fonts.em(style.depth) / 18 : 0, 0});
            rows.back().push_back(std::move(cell));
        }
    }
    return rows;
}

MathBox MathSetter::setContent(const MathTable& table, Style style) const
{
    const Style inner = table.isSmall ? script(style) : Style{style.depth, table.isDisplayed};
    const qreal em = m_fonts.em(inner.depth);
    const std::vector<std::vector<MathBox>> rows = cellsOf(table, inner);

    std::vector<qreal> widths;
    for (const std::vector<MathBox>& cells : rows) {
        widths.resize(std::max(widths.size(), cells.size()));
        for (std::size_t column = 0; column < cells.size(); ++column)
            widths[column] = std::max(widths[column], cells[column].width);
    }
    const std::vector<qreal> lefts = leftsOf(table, widths, em);

    const qreal gap = (table.isSmall ? 0.1 : table.isDisplayed ? 0.5 : 0.3) * em;
    MathBox box;
    qreal y = -gap;
    for (const std::vector<MathBox>& cells : rows) {
        qreal ascent = 0.7 * em;
        qreal descent = 0.3 * em;
        for (const MathBox& cell : cells) {
            ascent = std::max(ascent, cell.ascent);
            descent = std::max(descent, cell.descent);
        }
        for (std::size_t column = 0; column < cells.size(); ++column) {
            const qreal rest = widths[column] - cells[column].width;
            box.add(cells[column], {lefts[column] + rest * shareBefore(table, column), y + gap + ascent});
        }
        y += gap + ascent + descent;
    }
    box.ascent = 0;
    box.descent = y;
    box.width = lefts.back();
    MathBox centred;
    centred.ascent = y / 2 + m_fonts.axis(style.depth);
    centred.add(box, {0, -centred.ascent});
    return fenced(table.opening, centred, table.closing, style.depth);
}

} // namespace varnel
