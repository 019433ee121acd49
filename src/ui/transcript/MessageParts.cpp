// The rows of a message that are not its text: thinking, waiting, actions, and rules.
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
        const QPointF centre(m_column.mirrored ? box.right() - 8 * m_zoom : box.left() + 8 * m_zoom,
                             box.center().y());
        painter.save();
        painter.setRenderHint(QPainter::Antialiasing);
        painter.translate(centre);
        painter.scale(m_zoom, m_zoom);
        painter.rotate(state.isOpen ? 90 : m_column.mirrored ? 180 : 0);
        QPainterPath arrow({-2, -4});
        arrow.lineTo(2, 0);
        arrow.lineTo(-2, 4);
        painter.setPen(QPen(colour, 1.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.drawPath(arrow);
        painter.restore();
        painter.setFont(m_font);
        painter.setPen(colour);
        painter.drawText(box.adjusted(20 * m_zoom, 0, -20 * m_zoom, 0), m_column.leadingLine(),
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
        return m_column.placed(
            {m_column.left, m_spaceAbove, std::min(240 * m_zoom, m_column.width), targetSize * m_zoom});
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
            painter.drawEllipse(m_column.placed(
                QRectF(m_column.left + (2 + 8 * dot) * m_zoom, middle - 2 * m_zoom, 4 * m_zoom, 4 * m_zoom)));
        painter.restore();
        painter.setFont(m_font);
        painter.setPen(state.style.secondary);
        const QRectF text(m_column.left + 32 * m_zoom, m_spaceAbove, m_column.width - 32 * m_zoom,
                          24 * m_zoom);
        painter.drawText(m_column.placed(text), m_column.leadingLine(),
                         waitingText(state.message, state.now));
    }

private:
    RowColumn m_column;
    qreal m_zoom;
    qreal m_spaceAbove;
    QFont m_font;
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
                             m_isPrompt ? m_column.trailingLine() : m_column.leadingLine(), m_footer);
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
        targets.reserve(m_actions.size());
        for (std::size_t i = 0; i < m_actions.size(); ++i)
            targets.push_back({TargetKind::Action, {boxOf(i)}, actionName(m_actions[i]), {}, m_actions[i]});
        return targets;
    }

    QRectF hintArea() const override
    {
        if (m_footerWidth <= 0)
            return {};
        const qreal left = m_isPrompt ? m_column.left + m_column.width - m_footerWidth : m_column.left;
        return m_column.placed({left, m_top, m_footerWidth, targetSize * m_zoom});
    }

private:
    QRectF boxOf(std::size_t index) const
    {
        const qreal size = targetSize * m_zoom;
        return m_column.placed({m_iconsLeft + static_cast<qreal>(index) * size, m_top, size, size});
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
    default:
        return std::make_unique<ActionsRow>(row, context);
    }
}

} // namespace varnel
