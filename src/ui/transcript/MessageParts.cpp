// The rows of a message that are not its text: thinking, waiting, the error card, actions, and rules.
#include "ui/transcript/ActionIcons.h"
#include "ui/transcript/RowLayout.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace varnel {
namespace {

constexpr qreal targetSize = 32;

class RuleRow final : public RowLayout
{
public:
    RuleRow(const TranscriptRow& row, const RowContext& context)
        : m_frame(row.frame)
        , m_column(context.column)
        , m_zoom(context.style.zoom)
        , m_spaceAbove(context.style.px(row.spaceAbove))
    {}

    qreal height() const override { return m_spaceAbove + 9 * m_zoom; }

    void paint(QPainter& painter, const RowPaint& state) const override
    {
        paintQuoteBars(painter, m_frame, m_column, state.style, {m_spaceAbove, height(), false});
        const qreal indent = m_frame.indent * m_zoom;
        painter.fillRect(
            QRectF(m_column.left + indent, std::round(m_spaceAbove + 4 * m_zoom), m_column.width - indent, 1),
            state.style.hairline());
    }

private:
    RowFrame m_frame;
    RowColumn m_column;
    qreal m_zoom;
    qreal m_spaceAbove;
};

/// "Thinking… 12 s", with an arrow that points to what it opens.
class ThinkingRow final : public RowLayout
{
public:
    ThinkingRow(const TranscriptRow& row, const RowContext& context)
        : m_column(context.column)
        , m_zoom(context.style.zoom)
        , m_spaceAbove(context.style.px(row.spaceAbove))
        , m_font(context.style.bodyFont(13))
    {}

    qreal height() const override { return m_spaceAbove + targetSize * m_zoom; }

    void paint(QPainter& painter, const RowPaint& state) const override
    {
        const QColor colour = state.hovered == 0 ? state.style.text : state.style.secondary;
        const QRectF box = rect();
        const QPointF centre(box.left() + 8 * m_zoom, box.center().y());
        painter.save();
        painter.setRenderHint(QPainter::Antialiasing);
        painter.translate(centre);
        painter.scale(m_zoom, m_zoom);
        painter.rotate(state.isOpen ? 90 : 0);
        QPainterPath arrow({-2, -4});
        arrow.lineTo(2, 0);
        arrow.lineTo(-2, 4);
        painter.setPen(QPen(colour, 1.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.drawPath(arrow);
        painter.restore();
        painter.setFont(m_font);
        painter.setPen(colour);
        painter.drawText(box.adjusted(20 * m_zoom, 0, 0, 0), Qt::AlignLeft | Qt::AlignVCenter,
                         thinkingText(state.message, state.now));
    }

    std::vector<RowTarget> targets() const override
    {
        return {{TargetKind::Thinking,
                 {rect()},
                 TranscriptModel::tr("Show or hide what the model thought"),
                 {},
                 TranscriptAction::Copy}};
    }

private:
    QRectF rect() const
    {
        return {m_column.left, m_spaceAbove, std::min(200 * m_zoom, m_column.width), targetSize * m_zoom};
    }

    RowColumn m_column;
    qreal m_zoom;
    qreal m_spaceAbove;
    QFont m_font;
};

class WaitingRow final : public RowLayout
{
public:
    WaitingRow(const TranscriptRow& row, const RowContext& context)
        : m_column(context.column)
        , m_zoom(context.style.zoom)
        , m_spaceAbove(context.style.px(row.spaceAbove))
        , m_font(context.style.bodyFont(13))
    {}

    qreal height() const override { return m_spaceAbove + 24 * m_zoom; }

    void paint(QPainter& painter, const RowPaint& state) const override
    {
        const qreal middle = m_spaceAbove + 12 * m_zoom;
        painter.save();
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(state.style.secondary);
        for (int dot = 0; dot < 3; ++dot)
            painter.drawEllipse(QPointF(m_column.left + (4 + 8 * dot) * m_zoom, middle), 2 * m_zoom,
                                2 * m_zoom);
        painter.restore();
        painter.setFont(m_font);
        painter.setPen(state.style.secondary);
        painter.drawText(
            QRectF(m_column.left + 32 * m_zoom, m_spaceAbove, m_column.width - 32 * m_zoom, 24 * m_zoom),
            Qt::AlignLeft | Qt::AlignVCenter, waitingText(state.message, state.now));
    }

private:
    RowColumn m_column;
    qreal m_zoom;
    qreal m_spaceAbove;
    QFont m_font;
};

/// Why a turn failed, and what can be done about it.
class ErrorCard final : public RowLayout
{
public:
    ErrorCard(const TranscriptRow& row, const RowContext& context)
        : m_zoom(context.style.zoom)
        , m_box(context.column.left, context.style.px(row.spaceAbove), context.column.width, 0)
        , m_font(context.style.bodyFont(13))
        , m_text(shownText(row.text), {}, options(context))
    {
        m_box.setHeight(12 * m_zoom + m_text.height() + 4 * m_zoom + targetSize * m_zoom + 4 * m_zoom);
        const QFontMetricsF metrics(m_font);
        qreal left = m_box.left() + 8 * m_zoom;
        const qreal top = m_box.bottom() - (targetSize + 4) * m_zoom;
        const auto place = [&](TargetKind kind, const QString& name) {
            const qreal width = std::ceil(metrics.horizontalAdvance(name)) + 16 * m_zoom;
            m_buttons.push_back(
                {kind, {QRectF(left, top, width, targetSize * m_zoom)}, name, {}, TranscriptAction::Copy});
            left += width + 4 * m_zoom;
        };
        place(TargetKind::TryAgain, TranscriptModel::tr("Try again"));
        place(TargetKind::EditPrompt, TranscriptModel::tr("Edit"));
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
        painter.fillRect(QRectF(m_box.left(), m_box.top(), 3 * m_zoom, m_box.height()), state.style.error);
        painter.restore();
        painter.setPen(state.style.text);
        m_text.draw(painter, textOrigin(), state.clip.translated(-textOrigin()), state.selectionStart,
                    state.selectionEnd, state.style.selection());
        painter.setFont(m_font);
        for (std::size_t i = 0; i < m_buttons.size(); ++i) {
            painter.setPen(state.hovered == static_cast<int>(i) ? state.style.text : state.style.accent);
            painter.drawText(m_buttons[i].rects.front(), Qt::AlignCenter, m_buttons[i].name);
        }
    }

    std::vector<RowTarget> targets() const override { return m_buttons; }
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
    QPointF textOrigin() const { return m_box.topLeft() + QPointF(16, 12) * m_zoom; }
    StyledText::Options options(const RowContext& context) const
    {
        StyledText::Options options;
        options.font = m_font;
        options.pitch = 20 * m_zoom;
        options.ratio = context.column.ratio;
        options.width = m_box.width() - 32 * m_zoom;
        return options;
    }

    qreal m_zoom;
    QRectF m_box;
    QFont m_font;
    StyledText m_text;
    std::vector<RowTarget> m_buttons;
};

/// What answered, and what can be done with the message. Always as high, whether or not the actions show.
class ActionsRow final : public RowLayout
{
public:
    ActionsRow(const TranscriptRow& row, const RowContext& context)
        : m_column(context.column)
        , m_zoom(context.style.zoom)
        , m_top(context.style.px(row.spaceAbove))
        , m_isPrompt(context.message.role == TranscriptRole::User)
        , m_footer(harmless(context.message.footer, true))
        , m_font(context.style.bodyFont(12))
    {
        if (context.message.streaming)
            return;
        for (const TranscriptAction action : allActions) {
            if (context.message.actions & action)
                m_actions.push_back(action);
        }
        const qreal icons = static_cast<qreal>(m_actions.size()) * targetSize * m_zoom;
        const qreal available = std::max(0.0, m_column.width - icons - 12 * m_zoom);
        m_footer = QFontMetricsF(m_font).elidedText(m_footer, Qt::ElideRight, available);
        m_footerWidth = std::ceil(QFontMetricsF(m_font).horizontalAdvance(m_footer));
        const qreal beside = m_footerWidth > 0 ? m_footerWidth + 4 * m_zoom : -8 * m_zoom;
        m_iconsLeft = m_isPrompt ? m_column.left + m_column.width - beside - icons : m_column.left + beside;
    }

    qreal height() const override { return m_top + (targetSize + (m_isPrompt ? 0 : 24)) * m_zoom; }

    void paint(QPainter& painter, const RowPaint& state) const override
    {
        if (!m_footer.isEmpty() && !state.message.streaming) {
            painter.setFont(m_font);
            painter.setPen(state.style.secondary);
            painter.drawText(QRectF(m_column.left, m_top, m_column.width, targetSize * m_zoom),
                             Qt::AlignVCenter | (m_isPrompt ? Qt::AlignRight : Qt::AlignLeft), m_footer);
        }
        if (!state.isActive)
            return;
        for (std::size_t i = 0; i < m_actions.size(); ++i) {
            const bool hovered = state.hovered == static_cast<int>(i);
            const QRectF box = boxOf(i);
            if (hovered) {
                painter.save();
                painter.setRenderHint(QPainter::Antialiasing);
                painter.setPen(Qt::NoPen);
                painter.setBrush(state.style.bubble);
                painter.drawRoundedRect(box.adjusted(1, 1, -1, -1), 8 * m_zoom, 8 * m_zoom);
                painter.restore();
            }
            const bool done = m_actions[i] == TranscriptAction::Copy && state.wasCopied;
            paintActionIcon(painter, m_actions[i], box, m_zoom,
                            done      ? state.style.accent
                            : hovered ? state.style.text
                                      : state.style.secondary,
                            done);
        }
    }

    std::vector<RowTarget> targets() const override
    {
        std::vector<RowTarget> targets;
        for (std::size_t i = 0; i < m_actions.size(); ++i)
            targets.push_back({TargetKind::Action, {boxOf(i)}, actionName(m_actions[i]), {}, m_actions[i]});
        return targets;
    }

private:
    QRectF boxOf(std::size_t index) const
    {
        const qreal size = targetSize * m_zoom;
        return {m_iconsLeft + static_cast<qreal>(index) * size, m_top, size, size};
    }

    RowColumn m_column;
    qreal m_zoom;
    qreal m_top;
    bool m_isPrompt;
    QString m_footer;
    QFont m_font;
    qreal m_footerWidth = 0;
    qreal m_iconsLeft = 0;
    std::vector<TranscriptAction> m_actions;
};

} // namespace

std::unique_ptr<RowLayout> layOutMessageRow(const TranscriptRow& row, const RowContext& context)
{
    switch (row.kind) {
    case RowKind::Rule:
        return std::make_unique<RuleRow>(row, context);
    case RowKind::Thinking:
        return std::make_unique<ThinkingRow>(row, context);
    case RowKind::Waiting:
        return std::make_unique<WaitingRow>(row, context);
    case RowKind::Error:
        return std::make_unique<ErrorCard>(row, context);
    default:
        return std::make_unique<ActionsRow>(row, context);
    }
}

} // namespace varnel
