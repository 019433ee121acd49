// What stands around the text of a message: its attachments, what was looked up, and how it went wrong.
#include "ui/transcript/RowLayout.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>
#include <QTextCharFormat>

#include <algorithm>
#include <cmath>

namespace varnel {
namespace {

constexpr qreal targetSize = 32;

/// Buttons of words, one after the other, in as many lines as they need.
class ButtonRow
{
public:
    ButtonRow(const RowColumn& column, const QFont& font, qreal zoom)
        : m_column(column)
        , m_font(font)
        , m_zoom(zoom)
    {}

    void startAt(QPointF place, qreal width)
    {
        m_left = place.x();
        m_right = place.x() + width;
        m_next = place;
    }
    void add(TargetKind kind, const QString& name)
    {
        const qreal width = std::ceil(QFontMetricsF(m_font).horizontalAdvance(name)) + 16 * m_zoom;
        if (m_next.x() > m_left && m_next.x() + width > m_right)
            m_next = {m_left, m_next.y() + targetSize * m_zoom};
        const QRectF box(m_next, QSizeF(width, targetSize * m_zoom));
        m_targets.push_back({kind, {m_column.placed(box)}, name, {}, TranscriptAction::Copy});
        m_next.rx() += width + 4 * m_zoom;
    }
    qreal bottom() const { return m_next.y() + targetSize * m_zoom; }
    const std::vector<RowTarget>& targets() const { return m_targets; }

    void paint(QPainter& painter, const RowPaint& state) const
    {
        painter.setFont(m_font);
        for (std::size_t i = 0; i < m_targets.size(); ++i) {
            painter.setPen(state.hovered == static_cast<int>(i) ? state.style.text : state.style.accent);
            painter.drawText(m_targets[i].rects.front(), Qt::AlignCenter, m_targets[i].name);
        }
    }

private:
    RowColumn m_column;
    QFont m_font;
    qreal m_zoom;
    qreal m_left = 0;
    qreal m_right = 0;
    QPointF m_next;
    std::vector<RowTarget> m_targets;
};

/// Why a turn failed, and what can be done about it.
class ErrorCard final : public RowLayout
{
public:
    ErrorCard(const TranscriptRow& row, const RowContext& context)
        : m_column(context.column)
        , m_zoom(context.style.zoom)
        , m_box(context.column.left, context.style.px(row.spaceAbove), context.column.width, 0)
        , m_font(context.style.bodyFont(13))
        , m_text(shownText(row.text), formats(row, context), options(context))
        , m_buttons(context.column, m_font, m_zoom)
    {
        m_buttons.startAt({m_box.left() + 8 * m_zoom, m_box.top() + 16 * m_zoom + m_text.height()},
                          m_box.width() - 16 * m_zoom);
        const TranscriptMessage& message = context.message;
        m_buttons.add(TargetKind::TryAgain, TranscriptModel::tr("Try again"));
        if (message.remedies & TranscriptRemedy::ResetTemperature)
            m_buttons.add(TargetKind::ResetTemperature,
                          TranscriptModel::tr("Set temperature to 1 and try again"));
        if (message.remedies & TranscriptRemedy::SearchOff)
            m_buttons.add(TargetKind::SearchOff, TranscriptModel::tr("Turn search off and try again"));
        m_buttons.add(TargetKind::EditPrompt, TranscriptModel::tr("Edit"));
        m_buttons.add(TargetKind::OpenLogs, TranscriptModel::tr("Open logs"));
        m_box.setBottom(m_buttons.bottom() + 4 * m_zoom);
    }

    qreal height() const override { return m_box.bottom(); }

    void paint(QPainter& painter, const RowPaint& state) const override
    {
        painter.save();
        painter.setRenderHint(QPainter::Antialiasing);
        QPainterPath card;
        card.addRoundedRect(m_box, 8 * m_zoom, 8 * m_zoom);
        painter.setClipPath(card, Qt::IntersectClip);
        painter.fillRect(m_box, state.style.code);
        painter.fillRect(m_column.placed({m_box.left(), m_box.top(), 3 * m_zoom, m_box.height()}),
                         state.style.error);
        painter.restore();
        painter.setPen(state.style.text);
        m_text.draw(painter, textOrigin(), state.clip.translated(-textOrigin()), state.selectionStart,
                    state.selectionEnd, state.style.selection());
        m_buttons.paint(painter, state);
    }

    std::vector<RowTarget> targets() const override { return m_buttons.targets(); }
    int positionAt(QPointF point) const override { return m_text.positionAt(point - textOrigin()); }
    bool isText(QPointF point) const override
    {
        return QRectF(textOrigin(), QSizeF(m_text.naturalWidth(), m_text.height())).contains(point);
    }
    QList<QRectF> rectsOf(int start, int length) const override
    {
        QList<QRectF> rects = m_text.rectsOf(start, length);
        for (QRectF& rect : rects)
            rect.translate(textOrigin());
        return rects;
    }

private:
    /// What the service itself said stands back behind what the program says.
    static StyledText::Formats formats(const TranscriptRow& row, const RowContext& context)
    {
        const auto start = static_cast<int>(context.message.error.size());
        QTextCharFormat format;
        format.setForeground(context.style.secondary);
        return {{start, static_cast<int>(row.text.text.size()) - start, format}};
    }
    QPointF textOrigin() const { return m_box.topLeft() + QPointF(16, 12) * m_zoom; }
    StyledText::Options options(const RowContext& context) const
    {
        StyledText::Options options;
        options.font = m_font;
        options.pitch = 20 * m_zoom;
        options.ratio = context.column.ratio;
        options.width = m_box.width() - 32 * m_zoom;
        options.alignment = m_column.leading();
        return options;
    }

    RowColumn m_column;
    qreal m_zoom;
    QRectF m_box;
    QFont m_font;
    StyledText m_text;
    ButtonRow m_buttons;
};

/// Says that a reply ended before it was whole.
class UnfinishedRow final : public RowLayout
{
public:
    UnfinishedRow(const TranscriptRow& row, const RowContext& context)
        : m_column(context.column)
        , m_zoom(context.style.zoom)
        , m_top(context.style.px(row.spaceAbove))
        , m_font(context.style.bodyFont(13))
        , m_label(TranscriptModel::tr("Unfinished"))
        , m_buttons(context.column, m_font, m_zoom)
    {
        m_labelWidth = std::ceil(QFontMetricsF(m_font).horizontalAdvance(m_label));
        m_buttons.startAt({m_column.left + 24 * m_zoom + m_labelWidth, m_top}, m_column.width);
        if (context.message.canTryAgain)
            m_buttons.add(TargetKind::TryAgain, TranscriptModel::tr("Try again"));
    }

    qreal height() const override { return m_top + targetSize * m_zoom; }

    void paint(QPainter& painter, const RowPaint& state) const override
    {
        const qreal middle = m_top + targetSize * m_zoom / 2;
        painter.save();
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(state.style.warning, 1.5 * m_zoom, Qt::SolidLine, Qt::RoundCap));
        // A line that breaks off.
        const QRectF mark = m_column.placed({m_column.left, middle - 1, 10 * m_zoom, 2});
        painter.drawLine(QPointF(mark.left(), middle), QPointF(mark.left() + 4 * m_zoom, middle));
        painter.drawLine(QPointF(mark.right() - 2 * m_zoom, middle), QPointF(mark.right(), middle));
        painter.restore();
        painter.setFont(m_font);
        painter.setPen(state.style.warning);
        painter.drawText(
            m_column.placed({m_column.left + 16 * m_zoom, m_top, m_labelWidth + 1, targetSize * m_zoom}),
            m_column.leadingLine(), m_label);
        m_buttons.paint(painter, state);
    }

    std::vector<RowTarget> targets() const override { return m_buttons.targets(); }

private:
    RowColumn m_column;
    qreal m_zoom;
    qreal m_top;
    QFont m_font;
    QString m_label;
    qreal m_labelWidth = 0;
    ButtonRow m_buttons;
};

/// What was attached to a prompt, in lines below it that begin where the prompt ends.
class ChipsRow final : public RowLayout
{
public:
    ChipsRow(const TranscriptRow& row, const RowContext& context)
        : m_column(context.column)
        , m_zoom(context.style.zoom)
        , m_kindFont(context.style.bodyFont(12))
        , m_titleFont(context.style.bodyFont(13))
        , m_bottom(context.style.px(row.spaceAbove))
    {
        const qreal limit = std::floor(m_column.width * 0.8);
        qreal right = m_column.left + m_column.width;
        for (const TranscriptChip& chip : context.message.chips) {
            Chip shown = measured(chip, limit);
            const bool fits = right - shown.box.width() >= m_column.left + m_column.width - limit;
            if (!m_chips.empty() && !fits) {
                right = m_column.left + m_column.width;
                m_bottom += (chipHeight + 4) * m_zoom;
            }
            shown.box.moveTopLeft({right - shown.box.width(), m_bottom});
            right = shown.box.left() - 4 * m_zoom;
            m_chips.push_back(std::move(shown));
        }
        m_bottom += chipHeight * m_zoom;
    }

    qreal height() const override { return m_bottom; }

    void paint(QPainter& painter, const RowPaint& state) const override
    {
        for (const Chip& chip : m_chips) {
            const QRectF box = m_column.placed(chip.box);
            painter.save();
            painter.setRenderHint(QPainter::Antialiasing);
            painter.setPen(QPen(state.style.hairline(), 1));
            painter.setBrush(state.style.background);
            painter.drawRoundedRect(box.adjusted(0.5, 0.5, -0.5, -0.5), 8 * m_zoom, 8 * m_zoom);
            painter.restore();
            const QRectF inside = chip.box.adjusted(10 * m_zoom, 0, -10 * m_zoom, 0);
            painter.setFont(m_kindFont);
            painter.setPen(state.style.secondary);
            painter.drawText(m_column.placed({inside.left(), inside.top(), chip.kindWidth, inside.height()}),
                             m_column.leadingLine(), chip.kind);
            painter.setFont(m_titleFont);
            painter.setPen(state.style.text);
            painter.drawText(m_column.placed(inside.adjusted(chip.kindWidth + 8 * m_zoom, 0, 1, 0)),
                             m_column.leadingLine(), chip.title);
        }
    }

private:
    static constexpr qreal chipHeight = 28;

    struct Chip
    {
        QString kind;
        QString title;
        qreal kindWidth = 0;
        QRectF box;
    };

    Chip measured(const TranscriptChip& chip, qreal limit) const
    {
        const QFontMetricsF metrics(m_titleFont);
        Chip shown{harmless(chip.kind, true), {}, 0, {}};
        shown.kindWidth = std::ceil(QFontMetricsF(m_kindFont).horizontalAdvance(shown.kind));
        const qreal beside = shown.kindWidth + 28 * m_zoom;
        shown.title = metrics.elidedText(harmless(chip.title, true), Qt::ElideMiddle,
                                         std::min(limit - beside, 320 * m_zoom));
        shown.box.setSize({beside + std::ceil(metrics.horizontalAdvance(shown.title)), chipHeight * m_zoom});
        return shown;
    }

    RowColumn m_column;
    qreal m_zoom;
    QFont m_kindFont;
    QFont m_titleFont;
    std::vector<Chip> m_chips;
    qreal m_bottom;
};

/// "Searched for …" with a glass, "Read …" with a page.
class StepRow final : public RowLayout
{
public:
    StepRow(const TranscriptRow& row, const RowContext& context)
        : m_column(context.column)
        , m_zoom(context.style.zoom)
        , m_top(context.style.px(row.spaceAbove))
        , m_isSearch(row.first == 0)
        , m_font(context.style.bodyFont(13))
        , m_text(QFontMetricsF(m_font).elidedText(harmless(row.text.text, true), Qt::ElideRight,
                                                  m_column.width - 24 * m_zoom))
    {}

    qreal height() const override { return m_top + 24 * m_zoom; }

    void paint(QPainter& painter, const RowPaint& state) const override
    {
        const QRectF icon = m_column.placed({m_column.left, m_top + 4 * m_zoom, 16 * m_zoom, 16 * m_zoom});
        painter.save();
        painter.setRenderHint(QPainter::Antialiasing);
        painter.translate(icon.topLeft());
        painter.scale(m_zoom, m_zoom);
        painter.setPen(QPen(state.style.secondary, 1.25, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.setBrush(Qt::NoBrush);
        if (m_isSearch) {
            painter.drawEllipse(QPointF(7, 7), 4, 4);
            painter.drawLine(QPointF(10, 10), QPointF(13.5, 13.5));
        } else {
            painter.drawRoundedRect(QRectF(3.5, 2.5, 9, 11), 1.5, 1.5);
            for (const qreal y : {5.5, 8.0, 10.5})
                painter.drawLine(QPointF(6, y), QPointF(10, y));
        }
        painter.restore();
        painter.setFont(m_font);
        painter.setPen(state.style.secondary);
        painter.drawText(
            m_column.placed({m_column.left + 24 * m_zoom, m_top, m_column.width - 24 * m_zoom, 24 * m_zoom}),
            m_column.leadingLine(), m_text);
    }

private:
    RowColumn m_column;
    qreal m_zoom;
    qreal m_top;
    bool m_isSearch;
    QFont m_font;
    QString m_text;
};

} // namespace

std::unique_ptr<RowLayout> layOutCard(const TranscriptRow& row, const RowContext& context)
{
    switch (row.kind) {
    case RowKind::Error:
        return std::make_unique<ErrorCard>(row, context);
    case RowKind::Unfinished:
        return std::make_unique<UnfinishedRow>(row, context);
    case RowKind::Chips:
        return std::make_unique<ChipsRow>(row, context);
    default:
        return std::make_unique<StepRow>(row, context);
    }
}

} // namespace varnel
