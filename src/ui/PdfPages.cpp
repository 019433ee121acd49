#include "ui/PdfPages.h"

#include "base/Error.h"
#include "ui/transcript/TranscriptStyle.h"

#include <QFontMetricsF>
#include <QIODevice>

#include <algorithm>

namespace varnel {

namespace {

constexpr int unitsPerInch = 720;
constexpr qreal margin = 540;        // three quarters of an inch
constexpr qreal smallestWidth = 0.7; // of a page, on paper so small that the margins would take more

} // namespace

PdfPages::PdfPages(QIODevice* device, const QPageSize& size, const TranscriptStyle& style,
                   const QString& title, std::stop_token stop)
    : m_writer(device)
    , m_style(style)
    , m_title(title)
    , m_stop(std::move(stop))
{
    m_writer.setResolution(unitsPerInch);
    m_writer.setPageSize(size);
    m_writer.setPageMargins(QMarginsF());
    m_writer.setTitle(title);
    m_writer.setCreator(QStringLiteral("Varnel"));
    const QRectF page = m_writer.pageLayout().fullRectPixels(unitsPerInch);
    m_width = std::max(page.width() - 2 * margin, page.width() * smallestWidth);
    m_left = (page.width() - m_width) / 2;
    m_top = std::min(margin, page.height() * (1 - smallestWidth) / 2);
    m_bottom = page.height() - m_top;
    m_y = m_top;
    if (!m_painter.begin(&m_writer))
        throw Error(QStringLiteral("The PDF cannot be begun (%1).").arg(device->errorString()));
}

qreal PdfPages::take(qreal height)
{
    if (m_stop.stop_requested())
        throw Cancelled();
    if (m_y + height > m_bottom && m_y > m_top)
        newPage();
    const qreal top = m_y;
    m_y += height;
    return top;
}

qreal PdfPages::space(qreal& height)
{
    height = m_y > m_top ? std::clamp(m_bottom - m_y, 0.0, height) : 0;
    const qreal top = m_y;
    m_y += height;
    return top;
}

void PdfPages::keepTogether(qreal height)
{
    if (m_y > m_top && m_y + height > m_bottom && height <= m_bottom - m_top)
        newPage();
}

void PdfPages::newPage()
{
    paintFooter();
    m_writer.newPage();
    ++m_page;
    m_y = m_top;
}

void PdfPages::paintFooter()
{
    const QFont font = m_style.bodyFont(11);
    const QFontMetricsF metrics(font);
    const QString number = QString::number(m_page);
    const qreal numberWidth = metrics.horizontalAdvance(number);
    const qreal baseline = m_bottom + m_top / 2 + metrics.ascent() / 2;
    m_painter.setFont(font);
    m_painter.setPen(m_style.secondary);
    m_painter.drawText(QPointF(m_left, baseline),
                       metrics.elidedText(m_title, Qt::ElideRight, m_width - 2 * numberWidth));
    m_painter.drawText(QPointF(m_left + m_width - numberWidth, baseline), number);
}

void PdfPages::finish()
{
    paintFooter();
    m_painter.end();
}

} // namespace varnel
