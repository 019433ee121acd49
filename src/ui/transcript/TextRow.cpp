// Paragraphs, headings, formulas, the user's bubbles and what the model thought.
#include "ui/transcript/MathLayout.h"
#include "ui/transcript/RowLayout.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace varnel {
namespace {

struct TextLook
{
    QFont font;
    qreal pitch = TranscriptStyle::bodyPitch;
};

TextLook lookOf(const TranscriptRow& row, const TranscriptStyle& style)
{
    if (row.headingLevel > 0)
        return {style.headingFont(row.headingLevel), TranscriptStyle::headingPitch(row.headingLevel)};
    if (row.kind == RowKind::Maths) {
        QFont font = style.codeFont();
        font.setItalic(true);
        return {font, TranscriptStyle::bodyPitch};
    }
    if (row.kind == RowKind::ThinkingText)
        return {style.bodyFont(13), 20};
    return {style.bodyFont(), TranscriptStyle::bodyPitch};
}

/// A piece of a longer text that was cut after a break: the row below is the next line already.
QString shownLines(const TranscriptRow& row)
{
    QString text = shownText(row.text);
    if (!row.ends && text.endsWith(QChar::LineSeparator))
        text.chop(1);
    return text;
}

class TextRow final : public RowLayout
{
public:
    TextRow(const TranscriptRow& row, const RowContext& context)
        : m_kind(row.kind)
        , m_frame(row.frame)
        , m_markdown(row.text)
        , m_begins(row.begins)
        , m_ends(row.ends)
        , m_zoom(context.style.zoom)
        , m_spaceAbove(context.style.px(row.spaceAbove))
        , m_column(context.column)
        , m_look(lookOf(row, context.style))
        , m_muted(row.kind == RowKind::ThinkingText || !row.frame.bars.isEmpty())
        , m_text(shownLines(row), formatsOf(row.text, m_look.font, context.style), options(row),
                 formulasOf(row.text, m_look.font, options(row).width))
    {
        place();
    }

    qreal height() const override
    {
        return m_origin.y() + m_text.height() + (m_kind == RowKind::Bubble && m_ends ? 10 * m_zoom : 0);
    }

    void paint(QPainter& painter, const RowPaint& state) const override
    {
        if (m_kind == RowKind::Bubble)
            paintBubble(painter, state.style);
        paintFrame(painter, state.style);
        paintInlineCode(painter, state);
        painter.setPen(m_muted ? state.style.secondary : state.style.text);
        m_text.draw(painter, m_origin, state.clip.translated(-m_origin), state.selectionStart,
                    state.selectionEnd, state.style.selection());
    }

    std::vector<RowTarget> targets() const override { return linkTargets(m_markdown, *this, 0); }

    int positionAt(QPointF point) const override { return m_text.positionAt(point - m_origin); }

    bool isText(QPointF point) const override
    {
        const QRectF area(m_origin.x(), m_origin.y(), std::max(m_text.naturalWidth(), 1.0), m_text.height());
        return area.contains(m_text.isRightToLeft() ? QPointF(area.center().x(), point.y()) : point);
    }

    QList<QRectF> rectsOf(int start, int length) const override
    {
        QList<QRectF> rects = m_text.rectsOf(start, length);
        for (QRectF& rect : rects)
            rect.translate(m_origin);
        return rects;
    }

private:
    StyledText::Options options(const TranscriptRow& row) const
    {
        StyledText::Options options;
        options.font = m_look.font;
        options.pitch = m_look.pitch * m_zoom;
        options.ratio = m_column.ratio;
        options.width = m_kind == RowKind::Bubble
                            ? std::floor(m_column.width * 0.8) - 28 * m_zoom
                            : std::max(80 * m_zoom, m_column.width - row.frame.indent * m_zoom);
        return options;
    }

    /// Where the text begins, and the bubble around it.
    void place()
    {
        const qreal ratio = m_column.ratio;
        const auto whole = [ratio](qreal value) { return std::round(value * ratio) / ratio; };
        if (m_kind == RowKind::Bubble) {
            const bool single = m_begins && m_ends;
            const qreal limit = std::floor(m_column.width * 0.8);
            const qreal width =
                single ? std::min(limit, std::ceil(m_text.naturalWidth()) + 28 * m_zoom) : limit;
            const qreal left = m_column.mirrored ? m_column.left : m_column.left + m_column.width - width;
            // Text that runs leftwards was aligned to the full width: keep its leading edge in the bubble.
            const qreal shift = m_text.isRightToLeft() ? limit - width : 0;
            m_origin = {whole(left + 14 * m_zoom - shift),
                        whole(m_spaceAbove + (m_begins ? 10 * m_zoom : 0))};
            m_bubble = QRectF(left, m_spaceAbove, width, height() - m_spaceAbove);
            return;
        }
        const qreal indent = m_text.isRightToLeft() ? 0 : m_frame.indent * m_zoom;
        m_origin = {whole(m_column.left + indent), whole(m_spaceAbove)};
    }

    void paintBubble(QPainter& painter, const TranscriptStyle& style) const
    {
        const qreal radius = 12 * m_zoom;
        QRectF box = m_bubble;
        if (!m_begins)
            box.setTop(box.top() - radius);
        if (!m_ends)
            box.setBottom(box.bottom() + radius);
        painter.save();
        painter.setClipRect(m_bubble, Qt::IntersectClip);
        painter.setPen(Qt::NoPen);
        painter.setBrush(style.bubble);
        painter.drawRoundedRect(box, radius, radius);
        painter.restore();
    }

    void paintFrame(QPainter& painter, const TranscriptStyle& style) const
    {
        paintQuoteBars(painter, m_frame, m_column, style, {m_spaceAbove, height(), m_text.isRightToLeft()});
        if (m_frame.marker.isEmpty() && !m_frame.checked)
            return;
        const qreal gap = 8 * m_zoom;
        const bool mirrored = m_text.isRightToLeft();
        const qreal edge =
            mirrored ? m_column.left + m_column.width - m_frame.indent * m_zoom + gap : m_origin.x() - gap;
        const qreal baseline = m_origin.y() + m_text.firstBaseline();
        if (m_frame.checked) {
            paintCheckBox(painter, style, edge, baseline, mirrored);
            return;
        }
        painter.setFont(style.bodyFont());
        painter.setPen(style.secondary);
        const qreal width = QFontMetricsF(style.bodyFont()).horizontalAdvance(m_frame.marker);
        painter.drawText(QPointF(mirrored ? edge : edge - width, baseline), m_frame.marker);
    }

    void paintCheckBox(QPainter& painter, const TranscriptStyle& style, qreal edge, qreal baseline,
                       bool mirrored) const
    {
        const qreal size = 14 * m_zoom;
        const QRectF box(mirrored ? edge : edge - size, std::round(baseline - size + 2 * m_zoom) + 0.5, size,
                         size);
        painter.save();
        painter.setRenderHint(QPainter::Antialiasing);
        const bool checked = *m_frame.checked;
        painter.setPen(QPen(checked ? style.accent : style.border, 1.25 * m_zoom));
        painter.setBrush(checked ? QBrush(style.accent) : Qt::NoBrush);
        painter.drawRoundedRect(box, 3 * m_zoom, 3 * m_zoom);
        if (checked) {
            QPainterPath tick(box.topLeft() + QPointF(size * 0.24, size * 0.52));
            tick.lineTo(box.topLeft() + QPointF(size * 0.43, size * 0.72));
            tick.lineTo(box.topLeft() + QPointF(size * 0.77, size * 0.3));
            painter.setBrush(Qt::NoBrush);
            painter.setPen(QPen(style.onAccent, 1.75 * m_zoom, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
            painter.drawPath(tick);
        }
        painter.restore();
    }

    void paintInlineCode(QPainter& painter, const RowPaint& state) const
    {
        if (m_kind == RowKind::Maths)
            return;
        painter.save();
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(m_kind == RowKind::Bubble ? state.style.background : state.style.code);
        for (const MarkdownRange& range : m_markdown.ranges) {
            if (!(range.styles & MarkdownStyle::Code))
                continue;
            for (const QRectF& rect :
                 rectsOf(static_cast<int>(range.start), static_cast<int>(range.length))) {
                if (rect.intersects(state.clip))
                    painter.drawRoundedRect(rect.adjusted(-2 * m_zoom, 0, 2 * m_zoom, 0), 4 * m_zoom,
                                            4 * m_zoom);
            }
        }
        painter.restore();
    }

    RowKind m_kind;
    RowFrame m_frame;
    MarkdownText m_markdown;
    bool m_begins;
    bool m_ends;
    qreal m_zoom;
    qreal m_spaceAbove;
    RowColumn m_column;
    TextLook m_look;
    bool m_muted; ///< in the secondary colour
    StyledText m_text;
    QPointF m_origin;
    QRectF m_bubble;
};

} // namespace

void paintQuoteBars(QPainter& painter, const RowFrame& frame, const RowColumn& column,
                    const TranscriptStyle& style, QuoteBars bars)
{
    const qreal width = 3 * style.zoom;
    for (qsizetype i = 0; i < frame.bars.size(); ++i) {
        const qreal offset = frame.bars[i] * style.zoom;
        const qreal left = bars.mirrored ? column.left + column.width - offset - width : column.left + offset;
        const qreal top = i >= frame.bars.size() - frame.freshBars ? bars.spaceAbove : 0;
        painter.fillRect(QRectF(left, top, width, bars.height - top), style.hairline());
    }
}

std::unique_ptr<RowLayout> layOutText(const TranscriptRow& row, const RowContext& context)
{
    return std::make_unique<TextRow>(row, context);
}

} // namespace varnel
