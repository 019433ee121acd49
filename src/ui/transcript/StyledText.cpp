#include "ui/transcript/StyledText.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QTextOption>

#include <algorithm>
#include <cmath>

namespace varnel {
namespace {

QTextOption optionsOf(const StyledText::Options& options, bool leftwards)
{
    // A paragraph begins at the side its script begins at, whatever the window's own direction is.
    const bool leading = options.alignment == Qt::AlignLeading;
    QTextOption option(leading && leftwards ? Qt::AlignRight | Qt::AlignAbsolute : options.alignment);
    option.setTextDirection(options.isCode ? Qt::LeftToRight : Qt::LayoutDirectionAuto);
    option.setWrapMode(options.wraps ? QTextOption::WrapAtWordBoundaryOrAnywhere : QTextOption::ManualWrap);
    if (options.isCode)
        option.setTabStopDistance(4 * QFontMetricsF(options.font).horizontalAdvance(QLatin1Char(' ')));
    return option;
}

bool runsLeftwards(QChar c)
{
    return c.unicode() >= 0x590 && (c.direction() == QChar::DirR || c.direction() == QChar::DirAL ||
                                    c.direction() == QChar::DirRLE || c.direction() == QChar::DirRLI);
}

/// A formula takes the place of its source: a space as wide as it is, and nothing for the other characters,
/// so that every position in the text stays what it was.
QString withSpaceFor(const std::vector<InlineFormula>& formulas, QString text)
{
    for (const InlineFormula& formula : formulas) {
        for (int i = 0; i < formula.length; ++i)
            text[formula.start + i] = QChar(i == 0 ? char16_t(QChar::Nbsp) : char16_t(0x2060));
    }
    return text;
}

StyledText::Formats withSpaceFor(const std::vector<InlineFormula>& formulas,
                                 const StyledText::Formats& formats, const QFont& font)
{
    if (formulas.empty())
        return formats;
    const qreal space = QFontMetricsF(font).horizontalAdvance(QChar(QChar::Nbsp));
    StyledText::Formats all;
    auto next = formulas.begin();
    for (const QTextLayout::FormatRange& range : formats) {
        if (next == formulas.end() || range.start != next->start) {
            all.append(range);
            continue;
        }
        QTextCharFormat format;
        format.setFontLetterSpacingType(QFont::AbsoluteSpacing);
        format.setFontLetterSpacing(next->box->width - space);
        all.append({next->start, 1, format});
        ++next;
    }
    return all;
}

bool isWithin(const InlineFormula& formula, const QTextLine& line)
{
    return formula.start >= line.textStart() && formula.start < line.textStart() + line.textLength();
}

} // namespace

StyledText::StyledText(const QString& text, const Formats& formats, const Options& options,
                       std::vector<InlineFormula> formulas)
    : m_formulas(std::move(formulas))
    , m_text(withSpaceFor(m_formulas, text))
    , m_layout(std::make_unique<QTextLayout>(m_text, options.font))
    , m_rightToLeft(!options.isCode && text.isRightToLeft())
    , m_mixed(std::any_of(text.begin(), text.end(), runsLeftwards))
{
    m_layout->setTextOption(optionsOf(options, m_rightToLeft));
    m_layout->setFormats(withSpaceFor(m_formulas, formats, options.font));
    m_layout->setCacheEnabled(true);
    layOut(options);
}

void StyledText::layOut(const Options& options)
{
    // Lines stand on an even grid, whatever fonts fill in for missing letters.
    const QFontMetricsF metrics(options.font);
    const qreal baseline = (options.pitch - metrics.ascent() - metrics.descent()) / 2 + metrics.ascent();
    // Code is exact: the height of a block must follow from the number of its lines.
    const qreal tolerance = options.isCode ? options.pitch * 8 : options.pitch / 6;
    qreal top = 0;
    m_layout->beginLayout();
    for (QTextLine line = m_layout->createLine(); line.isValid(); line = m_layout->createLine()) {
        line.setLineWidth(options.width);
        qreal above = std::max(0.0, line.ascent() - baseline - tolerance);
        qreal below = std::max(0.0, line.descent() - (options.pitch - baseline) - tolerance);
        for (const InlineFormula& formula : m_formulas) {
            if (!isWithin(formula, line))
                continue;
            above = std::max(above, formula.box->ascent - baseline + 1);
            below = std::max(below, formula.box->descent - (options.pitch - baseline) + 1);
        }
        line.setPosition({0, top + above + baseline - line.ascent()});
        m_tops.push_back(top);
        top += std::ceil((options.pitch + above + below) * options.ratio - 1e-6) / options.ratio;
        m_naturalWidth = std::max(m_naturalWidth, line.naturalTextWidth());
    }
    m_layout->endLayout();
    m_height = top;
}

int StyledText::lineAt(qreal y) const
{
    const auto after = std::upper_bound(m_tops.begin(), m_tops.end(), y);
    return std::max(0, static_cast<int>(after - m_tops.begin()) - 1);
}

void StyledText::draw(QPainter& painter, QPointF origin, const QRectF& clip, int selectionStart,
                      int selectionEnd, const QColor& selection) const
{
    if (m_tops.empty())
        return;
    const int last = lineAt(clip.bottom());
    for (int i = lineAt(clip.top()); i <= last; ++i) {
        const QTextLine line = m_layout->lineAt(i);
        fillSelection(painter, origin, i, selectionStart, selectionEnd, selection);
        line.draw(&painter, origin);
        paintFormulas(painter, origin, line);
    }
}

void StyledText::paintFormulas(QPainter& painter, QPointF origin, const QTextLine& line) const
{
    for (const InlineFormula& formula : m_formulas) {
        if (!isWithin(formula, line))
            continue;
        const qreal x =
            std::min(line.cursorToX(formula.start), line.cursorToX(formula.start + formula.length));
        formula.box->paint(painter, origin + QPointF(x, line.y() + line.ascent()));
    }
}

void StyledText::drawLine(QPainter& painter, int line, QPointF corner) const
{
    const QPointF origin = corner - QPointF(0, lineTop(line));
    m_layout->lineAt(line).draw(&painter, origin);
    paintFormulas(painter, origin, m_layout->lineAt(line));
}

void StyledText::fillSelection(QPainter& painter, QPointF origin, int number, int start, int end,
                               const QColor& colour) const
{
    const QTextLine line = m_layout->lineAt(number);
    const int begin = std::max(start, line.textStart());
    const int length = std::min(end, line.textStart() + line.textLength()) - begin;
    if (length <= 0)
        return;
    const auto index = static_cast<std::size_t>(number);
    const qreal top = m_tops[index];
    const qreal height = (index + 1 < m_tops.size() ? m_tops[index + 1] : m_height) - top;
    const auto fill = [&](qreal from, qreal to) {
        painter.fillRect(QRectF(from, top, to - from, height).translated(origin), colour);
    };
    if (!m_mixed) {
        fill(line.cursorToX(begin), line.cursorToX(begin + length));
        return;
    }
    // Where directions mix, what is selected in one piece stands in several.
    for (const QGlyphRun& run : line.glyphRuns(begin, length))
        fill(run.boundingRect().left(), run.boundingRect().right());
}

int StyledText::positionAt(QPointF point) const
{
    if (m_tops.empty() || point.y() < 0)
        return 0;
    if (point.y() >= m_height)
        return length();
    const int position = m_layout->lineAt(lineAt(point.y())).xToCursor(point.x());
    // A formula is one thing to the hand: before it or after it.
    for (const InlineFormula& formula : m_formulas) {
        if (position > formula.start && position < formula.start + formula.length)
            return formula.start + formula.length;
    }
    return position;
}

QList<QRectF> StyledText::rectsOf(int start, int length) const
{
    QList<QRectF> rects;
    for (int i = 0; i < m_layout->lineCount(); ++i) {
        const QTextLine line = m_layout->lineAt(i);
        const int begin = std::max(start, line.textStart());
        const int end = std::min(start + length, line.textStart() + line.textLength());
        if (begin >= end)
            continue;
        const qreal from = line.cursorToX(begin);
        const qreal to = line.cursorToX(end);
        rects.append(QRectF(std::min(from, to), line.y(), std::abs(to - from), line.height()));
    }
    return rects;
}

qreal StyledText::firstBaseline() const
{
    return m_layout->lineCount() > 0 ? m_layout->lineAt(0).y() + m_layout->lineAt(0).ascent() : 0;
}

} // namespace varnel
