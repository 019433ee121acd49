// Code blocks: a header that names the language, the lines, and the space below them.
#include "ui/transcript/RowLayout.h"

#include <QCoreApplication>
#include <QFontMetricsF>
#include <QPainter>
#include <QTextCharFormat>

#include <algorithm>
#include <cmath>

namespace varnel {
namespace {

constexpr qreal headerHeight = 36;
constexpr qreal footerHeight = 12;
constexpr qreal padding = 16;
constexpr qreal radius = 8;

/// The box that all rows of a block share.
class CodeBox : public RowLayout
{
public:
    CodeBox(const TranscriptRow& row, const RowContext& context)
        : m_frame(row.frame)
        , m_group(context.group)
        , m_column(context.column)
        , m_zoom(context.style.zoom)
        , m_spaceAbove(context.style.px(row.spaceAbove))
    {
        const qreal indent = std::min(row.frame.indent * m_zoom, context.column.width / 2);
        const qreal letter = QFontMetricsF(context.style.codeFont()).horizontalAdvance(QLatin1Char('0'));
        m_contentWidth = std::ceil(row.code->columns * letter) + 2 * padding * m_zoom;
        m_left = context.column.left + indent;
        // The left edge keeps to the column, so that a block which grows wider while it arrives moves no
        // text.
        const qreal wide = std::max(context.column.width, context.column.wide) - indent;
        m_width = std::clamp(m_group->wraps ? 0 : m_contentWidth, context.column.width - indent, wide);
        if (m_group->wraps && m_contentWidth > context.column.width - indent)
            m_width = wide;
    }

    qreal scrollRange() const override
    {
        return m_group->wraps ? 0 : std::max(0.0, m_contentWidth - m_width);
    }

protected:
    qreal scroll() const { return std::clamp(m_group->scroll, 0.0, scrollRange()); }

    void paintBars(QPainter& painter, const TranscriptStyle& style) const
    {
        paintQuoteBars(painter, m_frame, m_column, style, {m_spaceAbove, height(), false});
    }

    RowFrame m_frame;
    const GroupState* m_group;
    RowColumn m_column;
    qreal m_zoom;
    qreal m_spaceAbove;
    qreal m_left = 0;
    qreal m_width = 0;
    qreal m_contentWidth = 0;
};

class CodeHeader final : public CodeBox
{
public:
    CodeHeader(const TranscriptRow& row, const RowContext& context)
        : CodeBox(row, context)
        , m_label(harmless(row.code->label, true))
        , m_font(context.style.bodyFont(12))
    {
        const QFontMetricsF metrics(m_font);
        qreal right = m_left + m_width - 4 * m_zoom;
        const auto place = [&](TargetKind kind, const QString& text, const QString& name) {
            const qreal width =
                std::max(32 * m_zoom, std::ceil(metrics.horizontalAdvance(text)) + 20 * m_zoom);
            right -= width;
            m_buttons.push_back(
                {kind, QRectF(right, m_spaceAbove + 2 * m_zoom, width, 32 * m_zoom), text, name});
        };
        place(TargetKind::CopyCode, tr("Copy"), tr("Copy code"));
        if (m_group->wraps || scrollRange() > 0) {
            place(TargetKind::WrapCode, m_group->wraps ? tr("Unwrap") : tr("Wrap"),
                  m_group->wraps ? tr("Do not wrap long lines") : tr("Wrap long lines"));
        }
        if (row.code->hasPath)
            place(TargetKind::WriteCode, tr("Write"), tr("Write %1").arg(m_label));
        std::reverse(m_buttons.begin(), m_buttons.end());
    }

    qreal height() const override { return m_spaceAbove + headerHeight * m_zoom; }

    void paint(QPainter& painter, const RowPaint& state) const override
    {
        paintBars(painter, state.style);
        const QRectF box(m_left, m_spaceAbove, m_width, headerHeight * m_zoom);
        painter.save();
        painter.setClipRect(box, Qt::IntersectClip);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        // What scrolls below a header that stays must not shine through the corners.
        painter.fillRect(QRectF(m_left, m_spaceAbove, m_width, radius * m_zoom), state.style.background);
        painter.setBrush(state.style.code);
        painter.drawRoundedRect(box.adjusted(0, 0, 0, radius * m_zoom), radius * m_zoom, radius * m_zoom);
        painter.restore();

        if (state.isSticky)
            painter.fillRect(QRectF(m_left, box.bottom() - 1, m_width, 1), state.style.hairline());
        painter.setFont(m_font);
        const qreal labelLeft = m_left + padding * m_zoom;
        const qreal labelWidth = m_buttons.front().rect.left() - labelLeft - 8 * m_zoom;
        painter.setPen(state.style.secondary);
        painter.drawText(QRectF(labelLeft, m_spaceAbove, labelWidth, headerHeight * m_zoom),
                         Qt::AlignLeft | Qt::AlignVCenter,
                         QFontMetricsF(m_font).elidedText(m_label, Qt::ElideMiddle, labelWidth));
        for (std::size_t i = 0; i < m_buttons.size(); ++i) {
            const Button& button = m_buttons[i];
            const bool copied = button.kind == TargetKind::CopyCode && state.wasCopied;
            painter.setPen(copied                                 ? state.style.accent
                           : state.hovered == static_cast<int>(i) ? state.style.text
                                                                  : state.style.secondary);
            painter.drawText(button.rect, Qt::AlignCenter, copied ? QString(QChar(0x2713)) : button.text);
        }
    }

    std::vector<RowTarget> targets() const override
    {
        std::vector<RowTarget> targets;
        targets.reserve(m_buttons.size());
        for (const Button& button : m_buttons)
            targets.push_back({button.kind, {button.rect}, button.name, m_label, TranscriptAction::Copy});
        return targets;
    }

private:
    struct Button
    {
        TargetKind kind;
        QRectF rect;
        QString text;
        QString name;
    };

    static QString tr(const char* text) { return QCoreApplication::translate("varnel::CodeHeader", text); }

    QString m_label;
    QFont m_font;
    std::vector<Button> m_buttons; ///< from left to right
};

QColor colourOf(CodeTokenKind kind, const TranscriptStyle& style)
{
    switch (kind) {
    case CodeTokenKind::Keyword:
        return style.syntaxKeyword;
    case CodeTokenKind::String:
    case CodeTokenKind::Inserted:
        return style.syntaxString;
    case CodeTokenKind::Number:
        return style.syntaxNumber;
    case CodeTokenKind::Comment:
        return style.syntaxComment;
    case CodeTokenKind::Name:
        return style.syntaxName;
    case CodeTokenKind::Removed:
        return style.error;
    }
    return style.text;
}

StyledText::Formats codeFormats(const TranscriptRow& row, const TranscriptStyle& style)
{
    StyledText::Formats formats;
    if (row.count == 0)
        return formats;
    const qsizetype begin = row.code->lines[static_cast<std::size_t>(row.first)].start;
    for (int line = row.first; line < row.first + row.count; ++line) {
        const auto offset = static_cast<int>(row.code->lines[static_cast<std::size_t>(line)].start - begin);
        for (const CodeToken& token : row.code->tokens(line)) {
            QTextCharFormat format;
            format.setForeground(colourOf(token.kind, style));
            formats.append({offset + token.start, token.length, format});
        }
    }
    return formats;
}

class CodeLines final : public CodeBox
{
public:
    CodeLines(const TranscriptRow& row, const RowContext& context)
        : CodeBox(row, context)
        , m_text(shown(row), codeFormats(row, context.style), options(context.style))
    {}

    qreal height() const override { return m_spaceAbove + m_text.height(); }

    void paint(QPainter& painter, const RowPaint& state) const override
    {
        paintBars(painter, state.style);
        painter.fillRect(QRectF(m_left, m_spaceAbove, m_width, m_text.height()), state.style.code);
        painter.save();
        painter.setClipRect(scrollArea(), Qt::IntersectClip);
        painter.setPen(state.style.text);
        const QPointF origin = textOrigin();
        m_text.draw(painter, origin, state.clip.translated(-origin), state.selectionStart, state.selectionEnd,
                    state.style.selection());
        painter.restore();
    }

    int positionAt(QPointF point) const override { return m_text.positionAt(point - textOrigin()); }
    bool isText(QPointF point) const override { return scrollArea().contains(point); }
    QRectF scrollArea() const override { return {m_left, m_spaceAbove, m_width, m_text.height()}; }

    QList<QRectF> rectsOf(int start, int length) const override
    {
        QList<QRectF> rects = m_text.rectsOf(start, length);
        for (QRectF& rect : rects)
            rect.translate(textOrigin());
        return rects;
    }

private:
    static QString shown(const TranscriptRow& row)
    {
        QString text = harmless(row.plainText(), true);
        text.replace(QLatin1Char('\n'), QChar::LineSeparator);
        return text;
    }

    StyledText::Options options(const TranscriptStyle& style) const
    {
        StyledText::Options options;
        options.font = style.codeFont();
        options.pitch = TranscriptStyle::codePitch * m_zoom;
        options.ratio = m_column.ratio;
        options.isCode = true;
        options.wraps = m_group->wraps;
        options.width = m_width - 2 * padding * m_zoom;
        return options;
    }

    QPointF textOrigin() const
    {
        const qreal ratio = m_column.ratio;
        return {std::round((m_left + padding * m_zoom - scroll()) * ratio) / ratio, m_spaceAbove};
    }

    StyledText m_text;
};

class CodeFooter final : public CodeBox
{
public:
    using CodeBox::CodeBox;

    qreal height() const override { return m_spaceAbove + footerHeight * m_zoom; }

    void paint(QPainter& painter, const RowPaint& state) const override
    {
        paintBars(painter, state.style);
        const QRectF box(m_left, 0, m_width, height());
        painter.save();
        painter.setClipRect(box, Qt::IntersectClip);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(state.style.code);
        painter.drawRoundedRect(box.adjusted(0, -radius * m_zoom, 0, 0), radius * m_zoom, radius * m_zoom);
        if (scrollRange() > 0) {
            const qreal track = m_width - 2 * padding * m_zoom;
            const qreal thumb = std::max(24 * m_zoom, track * m_width / m_contentWidth);
            const qreal left = m_left + padding * m_zoom + (track - thumb) * scroll() / scrollRange();
            painter.setBrush(state.style.hairline());
            painter.drawRoundedRect(QRectF(left, 3 * m_zoom, thumb, 4 * m_zoom), 2 * m_zoom, 2 * m_zoom);
        }
        painter.restore();
    }

    QRectF scrollArea() const override { return {m_left, 0, m_width, height()}; }
};

} // namespace

std::unique_ptr<RowLayout> layOutCode(const TranscriptRow& row, const RowContext& context)
{
    if (row.kind == RowKind::CodeHeader)
        return std::make_unique<CodeHeader>(row, context);
    if (row.kind == RowKind::CodeFooter)
        return std::make_unique<CodeFooter>(row, context);
    return std::make_unique<CodeLines>(row, context);
}

} // namespace varnel
