#include "ui/transcript/RowLayout.h"
#include "markdown/LinkTarget.h"

#include <QTextCharFormat>

#include <algorithm>
#include <cmath>

namespace varnel {
namespace {

/// Arabic and Hebrew know no italics: what a face has for them is often upright letters only, and a fallback
/// that is to be slanted shows boxes.
bool hasItalics(QStringView text)
{
    return std::none_of(text.begin(), text.end(), [](QChar letter) {
        return letter.direction() == QChar::DirR || letter.direction() == QChar::DirAL;
    });
}

QTextCharFormat formatOf(const MarkdownText& text, const MarkdownRange& range, const QFont& base,
                         const TranscriptStyle& style)
{
    QTextCharFormat format;
    if (range.styles & MarkdownStyle::Strong)
        format.setFontWeight(QFont::DemiBold);
    if (range.styles & MarkdownStyle::Emphasis) {
        if (hasItalics(QStringView(text.text).mid(range.start, range.length)))
            format.setFontItalic(true);
        else if (!(range.styles & MarkdownStyle::Strong))
            format.setFontWeight(std::max<int>(QFont::Medium, base.weight()));
    }
    if (range.styles & MarkdownStyle::Strikethrough)
        format.setFontStrikeOut(true);
    if (range.styles &
        (MarkdownStyles(MarkdownStyle::Code) | MarkdownStyle::Maths | MarkdownStyle::DisplayMaths)) {
        QFont font = style.codeFont();
        font.setPixelSize(std::max(1, qRound(base.pixelSize() * 13.0 / 15.0)));
        if (!(range.styles & MarkdownStyle::Code))
            font.setItalic(true);
        format.setFont(font, QTextCharFormat::FontPropertiesSpecifiedOnly);
        format.setFontFamilies({font.family()});
    }
    if (range.link >= 0) {
        const bool opens = isOpenableLink(text.links[range.link].destination);
        format.setFontUnderline(true);
        if (opens)
            format.setForeground(style.accent);
        else
            format.setUnderlineStyle(QTextCharFormat::DotLine);
    }
    return format;
}

qreal textHeight(const TranscriptRow& row, const RowContext& context, qreal pitch, qreal size)
{
    const qreal width = std::max(80.0, context.column.width / context.style.zoom - row.frame.indent);
    qreal units = 0;
    qsizetype breaks = 0;
    for (const QChar c : row.text.text) {
        units += c.unicode() >= 0x1100 ? 1.0 : 0.5;
        breaks += c == QChar::LineSeparator;
    }
    return pitch * (std::max(1.0, std::ceil(units * size / width)) + static_cast<qreal>(breaks));
}

qreal codeHeight(const TranscriptRow& row, const RowContext& context)
{
    if (!context.group || !context.group->wraps) {
        const qreal ratio = context.column.ratio * context.style.zoom;
        return row.count * std::ceil(TranscriptStyle::codePitch * ratio - 1e-6) / ratio;
    }
    const qreal columns =
        std::max(10.0, (context.column.wide / context.style.zoom - row.frame.indent - 32) / 8);
    qreal lines = 0;
    for (int i = row.first; i < row.first + row.count; ++i) {
        const auto length = static_cast<qreal>(row.code->lines[static_cast<std::size_t>(i)].length);
        lines += std::max(1.0, std::ceil(length / columns));
    }
    return lines * TranscriptStyle::codePitch;
}

/// Rows that are always equally high.
qreal partHeight(const TranscriptRow& row, const RowContext& context)
{
    switch (row.kind) {
    case RowKind::CodeHeader:
        return 36;
    case RowKind::CodeFooter:
        return 12;
    case RowKind::Rule:
        return 9;
    case RowKind::Waiting:
        return 24;
    case RowKind::Actions:
        return context.message.role == TranscriptRole::User ? 32 : 56;
    case RowKind::Error:
        return 92;
    case RowKind::Step:
        return 24;
    case RowKind::Unfinished:
        return 32;
    case RowKind::Chips:
        return 28;
    default:
        return 32;
    }
}

} // namespace

std::unique_ptr<RowLayout> layOut(const TranscriptRow& row, const RowContext& context)
{
    switch (row.kind) {
    case RowKind::Maths:
        if (auto formula = layOutMathsRow(row, context))
            return formula;
        return layOutText(row, context);
    case RowKind::Text:
    case RowKind::Bubble:
    case RowKind::ThinkingText:
        return layOutText(row, context);
    case RowKind::CodeHeader:
    case RowKind::CodeLines:
    case RowKind::CodeFooter:
        return layOutCode(row, context);
    case RowKind::Table:
        return layOutTable(row, context);
    case RowKind::Rule:
    case RowKind::Thinking:
    case RowKind::Waiting:
    case RowKind::Actions:
        break;
    case RowKind::Chips:
    case RowKind::Step:
    case RowKind::Error:
    case RowKind::Unfinished:
        return layOutCard(row, context);
    }
    return layOutMessageRow(row, context);
}

qreal estimatedHeight(const TranscriptRow& row, const RowContext& context)
{
    qreal height = 0;
    switch (row.kind) {
    case RowKind::Text:
    case RowKind::Maths:
        height = row.headingLevel > 0
                     ? textHeight(row, context, TranscriptStyle::headingPitch(row.headingLevel),
                                  TranscriptStyle::headingSize(row.headingLevel))
                     : textHeight(row, context, TranscriptStyle::bodyPitch, 15);
        break;
    case RowKind::Bubble:
        height = textHeight(row, context, TranscriptStyle::bodyPitch, 18) + 20;
        break;
    case RowKind::ThinkingText:
        height = textHeight(row, context, 20, 13);
        break;
    case RowKind::CodeLines:
        height = codeHeight(row, context);
        break;
    case RowKind::Table:
        height = row.count * 37;
        break;
    default:
        height = partHeight(row, context);
        break;
    }
    return context.style.px(row.spaceAbove + height);
}

bool isHeightKnown(const TranscriptRow& row, const RowContext& context)
{
    switch (row.kind) {
    case RowKind::CodeLines:
        return context.group && !context.group->wraps;
    case RowKind::CodeHeader:
    case RowKind::CodeFooter:
    case RowKind::Rule:
    case RowKind::Thinking:
    case RowKind::Waiting:
    case RowKind::Step:
    case RowKind::Unfinished:
    case RowKind::Actions:
        return true;
    default:
        return false;
    }
}

StyledText::Formats formatsOf(const MarkdownText& text, const QFont& base, const TranscriptStyle& style)
{
    StyledText::Formats formats;
    formats.reserve(text.ranges.size());
    for (const MarkdownRange& range : text.ranges) {
        formats.append({static_cast<int>(range.start), static_cast<int>(range.length),
                        formatOf(text, range, base, style)});
    }
    return formats;
}

QString shownText(const MarkdownText& text)
{
    QString shown = harmless(text.text, false);
    shown.replace(QLatin1Char('\n'), QLatin1Char(' '));
    return shown;
}

std::vector<RowTarget> linkTargets(const MarkdownText& text, const RowLayout& layout, int start)
{
    std::vector<RowTarget> targets;
    for (qsizetype i = 0; i < text.ranges.size();) {
        const MarkdownRange& range = text.ranges[i];
        // A link whose words are set differently is still one.
        qsizetype next = i + 1;
        while (range.link >= 0 && next < text.ranges.size() && text.ranges[next].link == range.link)
            ++next;
        if (range.link >= 0) {
            const MarkdownRange& last = text.ranges[next - 1];
            const MarkdownLink& link = text.links[range.link];
            RowTarget target;
            target.rects = layout.rectsOf(start + static_cast<int>(range.start),
                                          static_cast<int>(last.start + last.length - range.start));
            target.name = linkLabel(link);
            target.value = link.destination;
            targets.push_back(std::move(target));
        }
        i = next;
    }
    return targets;
}

QString linkLabel(const MarkdownLink& link)
{
    return withVisibleControls(link.destination);
}

} // namespace varnel
