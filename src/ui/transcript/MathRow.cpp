// A formula on a line of its own.
#include "ui/transcript/MathLayout.h"
#include "ui/transcript/RowLayout.h"

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace varnel {
namespace {

constexpr qreal margin = 6;
constexpr qreal smallest = 0.6; ///< a wider formula is drawn smaller, but never less readable than this

class MathRow final : public RowLayout
{
public:
    MathRow(const TranscriptRow& row, const RowContext& context, std::shared_ptr<const MathBox> box,
            qreal scale)
        : m_frame(row.frame)
        , m_column(context.column)
        , m_zoom(context.style.zoom)
        , m_spaceAbove(context.style.px(row.spaceAbove))
        , m_length(static_cast<int>(row.text.text.size()))
        , m_box(std::move(box))
        , m_scale(scale)
    {
        const qreal indent = m_frame.indent * m_zoom;
        const qreal width = m_box->width * m_scale;
        const qreal ratio = m_column.ratio;
        const qreal left = m_column.left + indent + std::max(0.0, m_column.width - indent - width) / 2;
        m_area = QRectF(std::round(left * ratio) / ratio, std::round(m_spaceAbove + margin * m_zoom), width,
                        m_box->height() * m_scale);
    }

    qreal height() const override
    {
        return std::ceil((m_area.bottom() + margin * m_zoom) * m_column.ratio) / m_column.ratio;
    }

    void paint(QPainter& painter, const RowPaint& state) const override
    {
        paintQuoteBars(painter, m_frame, m_column, state.style, {m_spaceAbove, height(), false});
        if (state.selectionStart < state.selectionEnd)
            painter.fillRect(m_area, state.style.selection());
        painter.setPen(m_frame.bars.isEmpty() ? state.style.text : state.style.secondary);
        painter.save();
        painter.translate(m_area.left(), m_area.top() + m_box->ascent * m_scale);
        painter.scale(m_scale, m_scale);
        m_box->paint(painter, {});
        painter.restore();
        if (m_frame.marker.isEmpty())
            return;
        const QFont font = state.style.bodyFont();
        const qreal width = QFontMetricsF(font).horizontalAdvance(m_frame.marker);
        painter.setFont(font);
        painter.setPen(state.style.secondary);
        painter.drawText(QPointF(m_column.left + (m_frame.indent - 8) * m_zoom - width,
                                 m_area.top() + m_box->ascent * m_scale),
                         m_frame.marker);
    }

    int positionAt(QPointF point) const override { return point.x() < m_area.center().x() ? 0 : m_length; }
    bool isText(QPointF point) const override { return m_area.contains(point); }
    QList<QRectF> rectsOf(int /*start*/, int length) const override
    {
        return length > 0 ? QList<QRectF>{m_area} : QList<QRectF>();
    }

private:
    RowFrame m_frame;
    RowColumn m_column;
    qreal m_zoom;
    qreal m_spaceAbove;
    int m_length;
    std::shared_ptr<const MathBox> m_box;
    qreal m_scale;
    QRectF m_area;
};

} // namespace

std::unique_ptr<RowLayout> layOutMathsRow(const TranscriptRow& row, const RowContext& context)
{
    if (!row.begins || !row.ends || row.frame.checked)
        return nullptr;
    auto box = layOutMaths(row.text.text, context.style.bodyFont(), MathPlace::Displayed);
    if (!box)
        return nullptr;
    const qreal available = context.column.width - row.frame.indent * context.style.zoom;
    const qreal scale = std::min(1.0, available / std::max(1.0, box->width));
    return scale < smallest ? nullptr : std::make_unique<MathRow>(row, context, std::move(box), scale);
}

} // namespace varnel
