#pragma once

#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>

#include <stop_token>

namespace varnel {

class TranscriptStyle;

/// The pages of a PDF document, filled from above in pieces that are never cut. Lengths are tenths of a
/// point.
class PdfPages
{
public:
    /// @param device where the document goes, open; outlives the pages.
    /// @param style its fonts and colours; outlives the pages.
    /// @param title of the document, repeated below every page. Throws Error when nothing can be written.
    PdfPages(QIODevice* device, const QPageSize& size, const TranscriptStyle& style, const QString& title,
             std::stop_token stop);

    QPainter& painter() { return m_painter; }
    qreal left() const { return m_left; }
    qreal width() const { return m_width; }
    qreal height() const { return m_bottom - m_top; }

    /// The top of a piece that is this high, on a new page if this one has no room for it. Throws Cancelled
    /// once a stop is requested.
    qreal take(qreal height);
    /// The top of a space between pieces; where the page ends, or nothing stands on it yet, there is none.
    /// @param height in: how much is wanted, out: how much there is.
    qreal space(qreal& height);
    /// Begins a new page unless so much fits on this one, or would not on any.
    void keepTogether(qreal height);
    /// Writes what is left to write.
    void finish();

private:
    void newPage();
    void paintFooter();

    QPdfWriter m_writer;
    QPainter m_painter;
    const TranscriptStyle& m_style;
    QString m_title;
    std::stop_token m_stop;
    qreal m_left = 0;
    qreal m_width = 0;
    qreal m_top = 0;
    qreal m_bottom = 0;
    qreal m_y = 0;
    int m_page = 1;
};

} // namespace varnel
