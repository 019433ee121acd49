// A stretch of a table's rows.
#include "ui/transcript/MathLayout.h"
#include "ui/transcript/RowLayout.h"

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace varnel {
namespace {

constexpr qreal cellPaddingX = 12;
constexpr qreal cellPaddingY = 6;
constexpr qreal narrowest = 120;        ///< a column gets at least this before the table starts to scroll
constexpr qreal widestFormula = 2000;   ///< in a cell, while its column has no width yet
constexpr int measuredRows = 60;        ///< column widths follow from so many rows
constexpr qsizetype measuredText = 400; ///< and so much of a cell

const QList<MarkdownText>& cellsOf(const MarkdownTable& table, int line)
{
    return line == 0 ? table.header : table.rows[line - 1];
}

/// The first column's text stands under that of the paragraphs.
qreal leftPadding(qsizetype column)
{
    return column == 0 ? 0 : cellPaddingX;
}

QFont cellFont(const TranscriptStyle& style, bool header)
{
    QFont font = style.bodyFont(14);
    if (header)
        font.setWeight(QFont::DemiBold);
    return font;
}

/// Whether the first words of a table are of a script that runs from right to left.
bool runsFromTheRight(const MarkdownTable& table)
{
    for (const MarkdownText& cell : table.header) {
        if (!cell.text.isEmpty())
            return cell.text.isRightToLeft();
    }
    return false;
}

/// How wide each column would like to be.
QList<qreal> naturalWidths(const MarkdownTable& table, const TranscriptStyle& style)
{
    QList<qreal> widths(table.columns.size(), style.px(48));
    const auto lines = std::min(measuredRows, static_cast<int>(table.rows.size()) + 1);
    for (int line = 0; line < lines; ++line) {
        const QList<MarkdownText>& cells = cellsOf(table, line);
        for (qsizetype column = 0; column < std::min(cells.size(), widths.size()); ++column) {
            MarkdownText text = cells[column];
            text.text.truncate(measuredText);
            StyledText::Options options;
            options.font = cellFont(style, line == 0);
            options.wraps = false;
            const StyledText cell(shownText(text), formatsOf(text, options.font, style), options,
                                  formulasOf(text, options.font, widestFormula));
            const qreal padding = style.px(leftPadding(column) + cellPaddingX);
            widths[column] = std::max(widths[column], std::ceil(cell.naturalWidth()) + padding + 1);
        }
    }
    return widths;
}

/// Narrow columns keep their width, the wide ones share what is left.
QList<qreal> fittedWidths(QList<qreal> widths, qreal available, qreal least)
{
    if (std::accumulate(widths.begin(), widths.end(), 0.0) <= available)
        return widths;
    QList<qreal> sorted = widths;
    std::sort(sorted.begin(), sorted.end());
    qreal rest = available;
    qreal share = 0;
    for (qsizetype i = 0; i < sorted.size(); ++i) {
        share = rest / static_cast<qreal>(sorted.size() - i);
        if (sorted[i] > share)
            break;
        rest -= sorted[i];
    }
    share = std::floor(std::max(share, least));
    for (qreal& width : widths)
        width = std::min(width, share);
    return widths;
}

class TableRows final : public RowLayout
{
public:
    TableRows(const TranscriptRow& row, const RowContext& context)
        : m_table(row.table)
        , m_frame(row.frame)
        , m_group(context.group)
        , m_column(context.column)
        , m_zoom(context.style.zoom)
        , m_spaceAbove(context.style.px(row.spaceAbove))
        , m_ends(row.ends)
        , m_isMirrored(runsFromTheRight(*row.table))
    {
        const qreal indent = std::min(row.frame.indent * m_zoom, context.column.width / 2);
        m_left = context.column.left + indent;
        const qreal available = std::max(context.column.width, context.column.wide) - indent;
        if (m_group->widths.size() != row.table->columns.size()) {
            context.group->widths = fittedWidths(naturalWidths(*row.table, context.style), available,
                                                 context.style.px(narrowest));
        }
        m_contentWidth = std::accumulate(m_group->widths.begin(), m_group->widths.end(), 0.0);
        m_width = std::min(m_contentWidth, available);
        if (m_isMirrored) {
            // It begins at the right, as its words do.
            m_left = context.column.left + std::max(0.0, context.column.width - indent - m_width);
            if (!std::exchange(context.group->isPlaced, true))
                context.group->scroll = scrollRange();
        }
        layOutCells(row, context.style);
    }

    qreal height() const override { return m_bottom + (m_ends && scrollRange() > 0 ? 12 * m_zoom : 0); }
    qreal scrollRange() const override { return std::max(0.0, m_contentWidth - m_width); }
    QRectF scrollArea() const override { return {m_left, m_spaceAbove, m_width, height() - m_spaceAbove}; }

    void paint(QPainter& painter, const RowPaint& state) const override
    {
        paintQuoteBars(painter, m_frame, m_column, state.style, {m_spaceAbove, height(), m_isMirrored});
        painter.save();
        painter.setClipRect(QRectF(m_left, 0, m_width, height()), Qt::IntersectClip);
        painter.setPen(state.style.text);
        for (const Cell& cell : m_cells) {
            const QPointF origin = originOf(cell);
            cell.text.draw(painter, origin, state.clip.translated(-origin), state.selectionStart - cell.start,
                           state.selectionEnd - cell.start, state.style.selection());
        }
        for (const Line& line : m_lines) {
            const qreal thickness = 1 / m_column.ratio * std::max(1.0, std::round(m_column.ratio));
            painter.fillRect(QRectF(m_left - scroll(), line.bottom - thickness, m_contentWidth, thickness),
                             line.isHeader ? state.style.border : state.style.hairline());
        }
        if (m_ends && scrollRange() > 0)
            paintScrollThumb(painter, state.style);
        painter.restore();
    }

    std::vector<RowTarget> targets() const override
    {
        std::vector<RowTarget> targets;
        for (const Cell& cell : m_cells) {
            for (RowTarget& target : linkTargets(cell.markdown, *this, cell.start))
                targets.push_back(std::move(target));
        }
        return targets;
    }

    int positionAt(QPointF point) const override
    {
        const Cell* best = nullptr;
        for (const Cell& cell : m_cells) {
            const QRectF box = boxOf(cell);
            const bool isReached = m_isMirrored ? point.x() < box.right() : point.x() >= box.left();
            if (point.y() >= box.top() && isReached)
                best = &cell;
        }
        return best ? best->start + best->text.positionAt(point - originOf(*best)) : 0;
    }

    bool isText(QPointF point) const override { return scrollArea().contains(point); }

    QList<QRectF> rectsOf(int start, int length) const override
    {
        QList<QRectF> rects;
        for (const Cell& cell : m_cells) {
            for (const QRectF& rect : cell.text.rectsOf(start - cell.start, length))
                rects.append(rect.translated(originOf(cell)));
        }
        return rects;
    }

private:
    struct Cell
    {
        MarkdownText markdown;
        StyledText text;
        QRectF box; ///< before scrolling
        qreal padding;
        int start; ///< in the row's plain text
    };
    struct Line
    {
        qreal bottom;
        bool isHeader;
    };

    void layOutCells(const TranscriptRow& row, const TranscriptStyle& style)
    {
        qreal top = m_spaceAbove;
        int position = 0;
        for (int number = row.first; number < row.first + row.count; ++number) {
            const QList<MarkdownText>& cells = cellsOf(*m_table, number);
            const std::size_t firstCell = m_cells.size();
            qreal offset = 0;
            qreal height = 0;
            for (qsizetype column = 0; column < std::min(cells.size(), m_table->columns.size()); ++column) {
                const qreal width = m_group->widths[column];
                const auto options = cellOptions(style, number == 0, column, width);
                m_cells.push_back(
                    {cells[column],
                     StyledText(shownText(cells[column]), formatsOf(cells[column], options.font, style),
                                options, formulasOf(cells[column], options.font, options.width)),
                     QRectF(m_left + (m_isMirrored ? m_contentWidth - offset - width : offset), top, width,
                            0),
                     (m_isMirrored ? cellPaddingX : leftPadding(column)) * m_zoom, position});
                height = std::max(height, m_cells.back().text.height());
                position += static_cast<int>(cells[column].text.size()) + 1; // a tab or a line feed follows
                offset += width;
            }
            height =
                std::ceil((std::max(height, 22 * m_zoom) + 2 * cellPaddingY * m_zoom + 1) * m_column.ratio) /
                m_column.ratio;
            for (std::size_t i = firstCell; i < m_cells.size(); ++i)
                m_cells[i].box.setHeight(height);
            top += height;
            m_lines.push_back({top, number == 0});
            if (cells.isEmpty())
                ++position;
        }
        m_bottom = top;
    }

    StyledText::Options cellOptions(const TranscriptStyle& style, bool header, qsizetype column,
                                    qreal width) const
    {
        StyledText::Options options;
        options.font = cellFont(style, header);
        options.pitch = 22 * m_zoom;
        options.ratio = m_column.ratio;
        options.width = std::max(1.0, width - (leftPadding(column) + cellPaddingX) * m_zoom);
        const MarkdownAlignment alignment = m_table->columns[column];
        if (alignment == MarkdownAlignment::Right)
            options.alignment = Qt::AlignRight | Qt::AlignAbsolute;
        else if (alignment == MarkdownAlignment::Centre)
            options.alignment = Qt::AlignHCenter;
        return options;
    }

    qreal scroll() const { return std::clamp(m_group->scroll, 0.0, scrollRange()); }
    QRectF boxOf(const Cell& cell) const { return cell.box.translated(-scroll(), 0); }
    QPointF originOf(const Cell& cell) const
    {
        const qreal ratio = m_column.ratio;
        const QPointF corner = boxOf(cell).topLeft() + QPointF(cell.padding, cellPaddingY * m_zoom);
        return {std::round(corner.x() * ratio) / ratio, std::round(corner.y() * ratio) / ratio};
    }

    void paintScrollThumb(QPainter& painter, const TranscriptStyle& style) const
    {
        const qreal thumb = std::max(24 * m_zoom, m_width * m_width / m_contentWidth);
        const qreal left = m_left + (m_width - thumb) * scroll() / scrollRange();
        painter.fillRect(QRectF(left, m_bottom + 4 * m_zoom, thumb, 4 * m_zoom), style.hairline());
    }

    std::shared_ptr<const MarkdownTable> m_table;
    RowFrame m_frame;
    const GroupState* m_group;
    RowColumn m_column;
    qreal m_zoom;
    qreal m_spaceAbove;
    bool m_ends;
    bool m_isMirrored;
    qreal m_left = 0;
    qreal m_width = 0;
    qreal m_contentWidth = 0;
    qreal m_bottom = 0;
    std::vector<Cell> m_cells;
    std::vector<Line> m_lines;
};

} // namespace

std::unique_ptr<RowLayout> layOutTable(const TranscriptRow& row, const RowContext& context)
{
    return std::make_unique<TableRows>(row, context);
}

} // namespace varnel
