#pragma once

#include "ui/PdfPages.h"
#include "ui/transcript/StyledText.h"
#include "ui/transcript/TranscriptRow.h"
#include "ui/transcript/TranscriptStyle.h"

#include <functional>
#include <vector>

namespace varnel {

/// Sets rows of the transcript on pages: line by line, so that each row may go on on the next page, and
/// wrapped to the width of the paper, so that nothing is cut off.
class PdfRows
{
public:
    /// Both outlive it.
    PdfRows(PdfPages& pages, const TranscriptStyle& style);

    void set(const TranscriptRow& row);
    /// A line of its own in the given font, kept on one page with `follow` points of what comes after it.
    void setLine(const QString& text, const QFont& font, const QColor& colour, qreal spaceAbove);

private:
    /// A line that several texts may share: draws itself at a top.
    using Draw = std::function<void(QPainter& painter, qreal top)>;

    void piece(const RowFrame& frame, qreal height, const QColor& ground, const Draw& draw);
    void space(const TranscriptRow& row);
    void paintBars(const RowFrame& frame, qreal top, qreal height);
    void setText(const TranscriptRow& row);
    /// False for a formula that is to be shown as its source.
    bool setFormula(const TranscriptRow& row);
    void setCode(const TranscriptRow& row);
    void setTable(const TranscriptRow& row);
    void setTableLine(const TranscriptRow& row, int number, const std::vector<qreal>& widths);
    void setTableAsList(const TranscriptRow& row);
    void setRule(const TranscriptRow& row);
    void setCellUnder(const TranscriptRow& row, const MarkdownText& name, const MarkdownText& cell);
    void setLines(const RowFrame& frame, const StyledText& text, qreal left, const QColor& colour,
                  const QColor& ground);
    void paintMarker(const RowFrame& frame, const StyledText& text, qreal left, qreal top);

    qreal px(qreal size) const { return m_style.px(size); }
    /// How far the row's contents stand from the left; deep nesting leaves them a third of the page.
    qreal indentOf(const RowFrame& frame) const;
    StyledText styled(const MarkdownText& text, const QFont& font, qreal pitch, qreal width,
                      Qt::Alignment alignment = Qt::AlignLeading) const;
    QColor inkOf(const TranscriptRow& row) const;

    PdfPages& m_pages;
    const TranscriptStyle& m_style;
    std::vector<qreal> m_widths; // of the columns of the table that is being set
};

} // namespace varnel
