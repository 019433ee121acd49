#include "ui/MarkedLine.h"

#include "ui/transcript/TranscriptRow.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QTextLayout>

#include <algorithm>
#include <cmath>

namespace varnel {

MarkedLine::MarkedLine(QQuickItem* parent)
    : QQuickPaintedItem(parent)
{
    connect(this, &MarkedLine::changed, this, [this] { update(); });
}

MarkedLine::Fitted MarkedLine::fitted(const QString& text, int markStart, int markLength, const QFont& font,
                                      qreal width)
{
    // How much of the line may lie before the mark.
    constexpr qreal leadShare = 0.4;
    const int start = std::clamp(markStart, 0, static_cast<int>(text.size()));
    const int length = std::clamp(markLength, 0, static_cast<int>(text.size()) - start);
    const QFontMetricsF metrics(font);
    Fitted fitted;
    fitted.text = metrics.elidedText(text.left(start), Qt::ElideLeft, width * leadShare);
    fitted.markStart = static_cast<int>(fitted.text.size());
    fitted.markLength = length;
    fitted.text += text.mid(start, length);
    const qreal left = width - metrics.horizontalAdvance(fitted.text);
    if (left > 0)
        fitted.text += metrics.elidedText(text.mid(start + length), Qt::ElideRight, left);
    return fitted;
}

void MarkedLine::paint(QPainter* painter)
{
    QFont bold = m_font;
    bold.setWeight(QFont::DemiBold);
    // The mark is wider than the text around it; room is left for that.
    const Fitted line = fitted(harmless(m_text, true), m_markStart, m_markLength, bold, width());
    QTextCharFormat mark;
    mark.setFontWeight(QFont::DemiBold);
    mark.setForeground(m_markColor);
    mark.setBackground(m_markFill);
    QTextLayout layout(line.text, m_font);
    layout.setFormats({{line.markStart, line.markLength, mark}});
    QTextOption option;
    option.setWrapMode(QTextOption::NoWrap);
    option.setAlignment((m_mirrored ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignAbsolute);
    layout.setTextOption(option);
    layout.beginLayout();
    QTextLine laidOut = layout.createLine();
    laidOut.setLineWidth(width());
    layout.endLayout();
    painter->setPen(m_color);
    painter->setClipRect(QRectF(0, 0, width(), height()));
    layout.draw(painter, {0, std::round((height() - laidOut.height()) / 2)});
}

} // namespace varnel
