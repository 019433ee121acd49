#include "ui/PdfRows.h"

#include "markdown/LinkTarget.h"
#include "ui/transcript/MathLayout.h"
#include "ui/transcript/RowLayout.h"

#include <QFontMetricsF>

#include <algorithm>
#include <cmath>

namespace varnel {

namespace {

constexpr qreal codePadding = 12;
constexpr qreal promptPadding = 12;
constexpr qreal smallestFormula = 0.6; // of its size: a wider one is shown as its source

/// A spacing that nobody sees keeps letters from being joined: who searches for "flow" must find it.
QFont searchable(QFont font)
{
    font.setLetterSpacing(QFont::AbsoluteSpacing, 1.0 / 64);
    return font;
}

QFont fontOf(const TranscriptRow& row, const TranscriptStyle& style)
{
    if (row.headingLevel > 0)
        return style.headingFont(row.headingLevel);
    if (row.kind == RowKind::Maths) {
        QFont font = style.codeFont();
        font.setItalic(true);
        return font;
    }
    return style.bodyFont(row.kind == RowKind::ThinkingText ? 13 : 15);
}

qreal pitchOf(const TranscriptRow& row)
{
    if (row.headingLevel > 0)
        return TranscriptStyle::headingPitch(row.headingLevel);
    return row.kind == RowKind::ThinkingText ? 20 : TranscriptStyle::bodyPitch;
}

} // namespace

PdfRows::PdfRows(PdfPages& pages, const TranscriptStyle& style)
    : m_pages(pages)
    , m_style(style)
{}

void PdfRows::set(const TranscriptRow& row)
{
    switch (row.kind) {
    case RowKind::Text:
    case RowKind::Maths:
    case RowKind::Bubble:
    case RowKind::ThinkingText:
        setText(row);
        break;
    case RowKind::CodeHeader:
    case RowKind::CodeLines:
    case RowKind::CodeFooter:
        setCode(row);
        break;
    case RowKind::Table:
        setTable(row);
        break;
    case RowKind::Rule:
        setRule(row);
        break;
    case RowKind::Thinking:
    case RowKind::Waiting:
    case RowKind::Error:
    case RowKind::Actions:
    case RowKind::Chips: // the prompt of a document names its attachments itself
    case RowKind::Step:
    case RowKind::Unfinished:
        break; // they belong to the window
    }
}

void PdfRows::setLine(const QString& text, const QFont& font, const QColor& colour, qreal spaceAbove)
{
    StyledText::Options options;
    options.font = searchable(font);
    options.pitch = QFontMetricsF(font).height();
    options.width = m_pages.width();
    QString line = harmless(text, true);
    line.replace(QLatin1Char('\n'), QLatin1Char(' '));
    const StyledText styled(line, {}, options);
    qreal height = px(spaceAbove);
    m_pages.space(height);
    m_pages.keepTogether(styled.height() + 3 * px(TranscriptStyle::bodyPitch));
    setLines({}, styled, m_pages.left(), colour, {});
    height = px(4);
    m_pages.space(height);
}

qreal PdfRows::indentOf(const RowFrame& frame) const
{
    return std::min(px(frame.indent), m_pages.width() * 2 / 3);
}

QColor PdfRows::inkOf(const TranscriptRow& row) const
{
    return row.kind == RowKind::ThinkingText || !row.frame.bars.isEmpty() ? m_style.secondary : m_style.text;
}

StyledText PdfRows::styled(const MarkdownText& text, const QFont& font, qreal pitch, qreal width,
                           Qt::Alignment alignment) const
{
    StyledText::Options options;
    options.font = searchable(font);
    options.pitch = px(pitch);
    options.width = std::max(1.0, width);
    options.alignment = alignment;
    StyledText::Formats formats = formatsOf(text, font, m_style);
    for (qsizetype i = 0; i < formats.size(); ++i) {
        const qsizetype link = text.ranges[i].link;
        if (link < 0 || !isOpenableLink(text.links[link].destination))
            continue;
        formats[i].format.setAnchor(true);
        formats[i].format.setAnchorHref(text.links[link].destination);
    }
    return {shownText(text), formats, options, formulasOf(text, font, options.width)};
}

void PdfRows::paintBars(const RowFrame& frame, qreal top, qreal height)
{
    for (const qreal bar : frame.bars) {
        const qreal offset = std::min(px(bar), m_pages.width() * 2 / 3);
        m_pages.painter().fillRect(QRectF(m_pages.left() + offset, top, px(2), height), m_style.hairline());
    }
}

void PdfRows::piece(const RowFrame& frame, qreal height, const QColor& ground, const Draw& draw)
{
    const qreal top = m_pages.take(height);
    if (ground.isValid()) {
        const qreal indent = indentOf(frame);
        // A hair more, so that no line of paper shows between two pieces.
        m_pages.painter().fillRect(QRectF(m_pages.left() + indent, top, m_pages.width() - indent, height + 1),
                                   ground);
    }
    paintBars(frame, top, height);
    if (draw)
        draw(m_pages.painter(), top);
}

void PdfRows::space(const TranscriptRow& row)
{
    qreal height = px(row.spaceAbove);
    const qreal top = m_pages.space(height);
    RowFrame around = row.frame;
    around.bars.resize(std::max<qsizetype>(0, around.bars.size() - around.freshBars));
    paintBars(around, top, height);
}

void PdfRows::setLines(const RowFrame& frame, const StyledText& text, qreal left, const QColor& colour,
                       const QColor& ground)
{
    for (int line = 0; line < text.lineCount(); ++line) {
        const qreal height = text.lineTop(line + 1) - text.lineTop(line);
        piece(frame, height, ground, [&](QPainter& painter, qreal top) {
            painter.setPen(colour);
            text.drawLine(painter, line, {left, top});
            if (line == 0)
                paintMarker(frame, text, left, top);
        });
    }
}

void PdfRows::paintMarker(const RowFrame& frame, const StyledText& text, qreal left, qreal top)
{
    const QString marker = frame.checked ? QString(QChar(*frame.checked ? 0x2611 : 0x2610)) : frame.marker;
    if (marker.isEmpty())
        return;
    QPainter& painter = m_pages.painter();
    const QFont font = m_style.bodyFont();
    const qreal width = QFontMetricsF(font).horizontalAdvance(marker);
    painter.setFont(font);
    painter.setPen(m_style.secondary);
    const qreal x = text.isRightToLeft() ? m_pages.left() + m_pages.width() - width : left - width - px(6);
    painter.drawText(QPointF(std::max(m_pages.left(), x), top + text.firstBaseline()), marker);
}

void PdfRows::setText(const TranscriptRow& row)
{
    if (row.kind == RowKind::Maths && setFormula(row))
        return;
    const bool isPrompt = row.kind == RowKind::Bubble;
    const qreal indent = isPrompt ? px(promptPadding) : indentOf(row.frame);
    MarkdownText shown = row.text;
    if (!row.ends && shown.text.endsWith(QChar::LineSeparator))
        shown.text.chop(1); // the row below is the next line already
    const qreal width = m_pages.width() - (isPrompt ? 2 : 1) * indent;
    const StyledText text = styled(shown, fontOf(row, m_style), pitchOf(row), width);
    const QColor ground = isPrompt ? m_style.code : QColor();
    space(row);
    if (row.headingLevel > 0)
        m_pages.keepTogether(text.height() + 3 * px(TranscriptStyle::bodyPitch));
    if (isPrompt && row.begins)
        piece(row.frame, px(promptPadding / 2), ground, {});
    const qreal left = m_pages.left() + (text.isRightToLeft() && !isPrompt ? 0 : indent);
    setLines(row.frame, text, left, inkOf(row), ground);
    if (isPrompt && row.ends)
        piece(row.frame, px(promptPadding / 2), ground, {});
}

bool PdfRows::setFormula(const TranscriptRow& row)
{
    const auto box = row.begins && row.ends
                         ? layOutMaths(row.text.text, m_style.bodyFont(), MathPlace::Displayed)
                         : nullptr;
    const qreal indent = indentOf(row.frame);
    const qreal available = m_pages.width() - indent;
    const qreal scale = box ? std::min(1.0, available / std::max(1.0, box->width)) : 0;
    if (scale < smallestFormula || box->height() * scale > m_pages.height() / 2)
        return false;
    space(row);
    piece(row.frame, box->height() * scale + px(12), {}, [&](QPainter& painter, qreal top) {
        painter.save();
        painter.setPen(inkOf(row));
        painter.translate(m_pages.left() + indent + (available - box->width * scale) / 2,
                          top + px(6) + box->ascent * scale);
        painter.scale(scale, scale);
        box->paint(painter, {});
        painter.restore();
    });
    return true;
}

void PdfRows::setCode(const TranscriptRow& row)
{
    space(row);
    if (row.kind == RowKind::CodeFooter) {
        piece(row.frame, px(codePadding / 2), m_style.code, {});
        return;
    }
    RowFrame frame = row.frame;
    frame.marker.clear();
    frame.checked.reset();
    const qreal left = m_pages.left() + indentOf(row.frame) + px(codePadding);
    StyledText::Options options;
    options.width = std::max(1.0, m_pages.width() - indentOf(row.frame) - 2 * px(codePadding));
    if (row.kind == RowKind::CodeHeader) {
        m_pages.keepTogether(4 * px(TranscriptStyle::codePitch));
        piece(frame, px(codePadding / 2), m_style.code, {});
        if (row.code->label.isEmpty())
            return;
        options.font = m_style.bodyFont(11);
        options.pitch = px(TranscriptStyle::metaPitch);
        const StyledText label(harmless(row.code->label, true), {}, options);
        setLines(frame, label, left, m_style.secondary, m_style.code);
        return;
    }
    options.font = m_style.codeFont();
    options.pitch = px(TranscriptStyle::codePitch - 2);
    options.isCode = true;
    QString lines = harmless(row.plainText(), true);
    lines.replace(QLatin1Char('\n'), QChar::LineSeparator);
    setLines(frame, StyledText(lines, {}, options), left, m_style.text, m_style.code);
}

void PdfRows::setRule(const TranscriptRow& row)
{
    space(row);
    piece(row.frame, px(9), {}, [&](QPainter& painter, qreal top) {
        const qreal indent = indentOf(row.frame);
        painter.fillRect(QRectF(m_pages.left() + indent, top + px(4), m_pages.width() - indent, px(1)),
                         m_style.hairline());
    });
}

} // namespace varnel
