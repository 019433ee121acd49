// The tables of a PDF: as columns where each gets room for some words, else as a list of their cells.
#include "ui/PdfRows.h"

#include <algorithm>
#include <numeric>

namespace varnel {

namespace {

constexpr qreal cellPadding = 8;
constexpr qreal narrowestColumn = 56;
constexpr int measuredRows = 60;
constexpr qsizetype measuredText = 400;
constexpr qreal cellPitch = 20;

const QList<MarkdownText>& cellsOf(const MarkdownTable& table, int line)
{
    return line == 0 ? table.header : table.rows[line - 1];
}

Qt::Alignment alignmentOf(MarkdownAlignment alignment)
{
    switch (alignment) {
    case MarkdownAlignment::Right:
        return Qt::AlignRight | Qt::AlignAbsolute;
    case MarkdownAlignment::Centre:
        return Qt::AlignHCenter;
    case MarkdownAlignment::Default:
    case MarkdownAlignment::Left:
        break;
    }
    return Qt::AlignLeading;
}

QFont cellFont(const TranscriptStyle& style, bool isHeader)
{
    QFont font = style.bodyFont(13);
    if (isHeader)
        font.setWeight(QFont::DemiBold);
    return font;
}

/// Narrow columns get what they want, the wide ones share what is left.
std::vector<qreal> fitted(std::vector<qreal> widths, qreal available)
{
    if (std::accumulate(widths.begin(), widths.end(), 0.0) <= available)
        return widths;
    std::vector<qreal> sorted = widths;
    std::sort(sorted.begin(), sorted.end());
    qreal rest = available;
    qreal share = 0;
    for (std::size_t i = 0; i < sorted.size(); ++i) {
        share = rest / static_cast<qreal>(sorted.size() - i);
        if (sorted[i] > share)
            break;
        rest -= sorted[i];
    }
    for (qreal& width : widths)
        width = std::min(width, share);
    return widths;
}

} // namespace

void PdfRows::setTable(const TranscriptRow& row)
{
    const MarkdownTable& table = *row.table;
    const qreal available = m_pages.width() - indentOf(row.frame);
    const auto columns = table.columns.size();
    space(row);
    if (static_cast<qreal>(columns) * px(narrowestColumn) > available) {
        setTableAsList(row);
        return;
    }
    if (row.begins) {
        std::vector<qreal> widths(static_cast<std::size_t>(columns), px(32));
        const int lines = std::min(measuredRows, static_cast<int>(table.rows.size()) + 1);
        for (int line = 0; line < lines; ++line) {
            const QList<MarkdownText>& cells = cellsOf(table, line);
            for (qsizetype i = 0; i < std::min(cells.size(), columns); ++i) {
                MarkdownText text = cells[i];
                text.text.truncate(measuredText);
                const StyledText cell = styled(text, cellFont(m_style, line == 0), cellPitch, 1e6);
                qreal& width = widths[static_cast<std::size_t>(i)];
                width = std::max(width, cell.naturalWidth() + 2 * px(cellPadding) + 1);
            }
        }
        m_widths = fitted(std::move(widths), available);
    }
    for (int number = row.first; number < row.first + row.count; ++number)
        setTableLine(row, number, m_widths);
}

void PdfRows::setTableLine(const TranscriptRow& row, int number, const std::vector<qreal>& widths)
{
    const QList<MarkdownText>& cells = cellsOf(*row.table, number);
    const bool isHeader = number == 0;
    const auto count = std::min(static_cast<std::size_t>(cells.size()), widths.size());
    std::vector<StyledText> texts;
    int lines = 1;
    for (std::size_t i = 0; i < count; ++i) {
        const auto column = static_cast<qsizetype>(i);
        texts.push_back(styled(cells[column], cellFont(m_style, isHeader), cellPitch,
                               widths[i] - 2 * px(cellPadding), alignmentOf(row.table->columns[column])));
        lines = std::max(lines, texts.back().lineCount());
    }
    RowFrame frame = row.frame;
    frame.marker.clear();
    frame.checked.reset();
    m_pages.keepTogether(std::min(lines, 12) * px(cellPitch) + px(6) + (isHeader ? px(2 * cellPitch) : 0));
    piece(frame, px(3), {}, {});
    for (int line = 0; line < lines; ++line) {
        qreal height = px(cellPitch);
        for (const StyledText& text : texts) {
            if (line < text.lineCount())
                height = std::max(height, text.lineTop(line + 1) - text.lineTop(line));
        }
        piece(frame, height, {}, [&](QPainter& painter, qreal top) {
            painter.setPen(inkOf(row));
            qreal left = m_pages.left() + indentOf(row.frame) + px(cellPadding);
            for (std::size_t i = 0; i < texts.size(); ++i) {
                if (line < texts[i].lineCount())
                    texts[i].drawLine(painter, line, {left, top});
                left += widths[i];
            }
        });
    }
    piece(frame, px(4), {}, [&](QPainter& painter, qreal top) {
        const qreal width = std::accumulate(widths.begin(), widths.end(), 0.0);
        painter.fillRect(QRectF(m_pages.left() + indentOf(row.frame), top + px(3), width, px(0.8)),
                         isHeader ? m_style.border : m_style.hairline());
    });
}

void PdfRows::setTableAsList(const TranscriptRow& row)
{
    const MarkdownTable& table = *row.table;
    for (int number = row.first; number < row.first + row.count; ++number) {
        // The names of the columns stand beside each cell.
        if (number == 0 && !table.rows.isEmpty())
            continue;
        const QList<MarkdownText>& cells = cellsOf(table, number);
        for (qsizetype i = 0; i < cells.size(); ++i)
            setCellUnder(row, i < table.header.size() ? table.header[i] : MarkdownText(), cells[i]);
        setRule(row);
    }
}

void PdfRows::setCellUnder(const TranscriptRow& row, const MarkdownText& name, const MarkdownText& cell)
{
    const qreal width = m_pages.width() - indentOf(row.frame);
    const qreal left = m_pages.left() + indentOf(row.frame);
    RowFrame frame = row.frame;
    frame.marker.clear();
    frame.checked.reset();
    if (!name.text.isEmpty()) {
        setLines(frame, styled(name, cellFont(m_style, true), cellPitch, width), left, m_style.secondary, {});
    }
    setLines(frame, styled(cell, cellFont(m_style, false), cellPitch, width - px(16)), left + px(16),
             inkOf(row), {});
}

} // namespace varnel
