#include "ui/transcript/TranscriptPainter.h"

#include <QPainter>

#include <algorithm>

namespace varnel {
namespace {

/// The header of the code block that runs into the view from above.
std::optional<PlacedRow> stickyHeader(TranscriptDocument& document, const ScrollPosition& position,
                                      RowRef first)
{
    const TranscriptRow& row = document.row(first);
    if (row.kind != RowKind::CodeLines && row.kind != RowKind::CodeFooter && row.kind != RowKind::CodeHeader)
        return std::nullopt;
    const RowRef header{first.message, row.groupStart};
    RowRef last = first;
    const qreal ratio = document.column().ratio;
    // Only as far as the header could reach: a block may have many thousand rows.
    const qint64 reach = position.top() + document.heightOf(header);
    for (std::optional<RowRef> ref = document.next(last);
         ref && ref->message == first.message && document.row(*ref).group == row.group &&
         document.topOf(*ref) <= reach;
         ref = document.next(*ref))
        last = *ref;
    const qint64 bottom = document.topOf(last) + document.heightOf(last);
    const qreal space = document.style().px(document.row(header).spaceAbove);
    const auto spaceAbove = static_cast<qint64>(space * ratio);
    if (document.topOf(header) + spaceAbove >= position.top())
        return std::nullopt;
    const qint64 highest = bottom - document.heightOf(header);
    return PlacedRow{
        header, static_cast<qreal>(std::min<qint64>(-spaceAbove, highest - position.top())) / ratio, true};
}

void paintFocusRing(QPainter& painter, TranscriptDocument& document, const PlacedRow& placed, int index)
{
    const std::vector<RowTarget> targets = document.layout(placed.ref).targets();
    if (static_cast<std::size_t>(index) >= targets.size())
        return;
    painter.save();
    painter.translate(0, placed.y);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(document.style().accent, 2));
    painter.setBrush(Qt::NoBrush);
    // The line's inner edge is two pixels away from what has the focus.
    for (const QRectF& rect : targets[static_cast<std::size_t>(index)].rects)
        painter.drawRoundedRect(rect.adjusted(-3, -3, 3, 3), 5, 5);
    painter.restore();
}

/// Marks what was found like a pen does, over the text; the present place has an outline as well.
void paintFound(QPainter& painter, TranscriptDocument& document, const TranscriptFinder& finder,
                const PlacedRow& placed)
{
    const RowLayout& layout = document.layout(placed.ref);
    const std::vector<FoundText> matches = finder.within(placed.ref, document.row(placed.ref));
    if (matches.empty())
        return;
    const TranscriptStyle& style = document.style();
    QColor marker = style.warning;
    marker.setAlphaF(0.28F);
    if (const QRectF area = layout.scrollArea(); !area.isEmpty())
        painter.setClipRect(area, Qt::IntersectClip);
    for (const FoundText& found : matches) {
        for (const QRectF& rect : layout.rectsOf(found.start, found.length)) {
            painter.fillRect(rect, marker);
            if (finder.current() != found)
                continue;
            painter.setPen(QPen(style.warning, 2));
            painter.setBrush(Qt::NoBrush);
            painter.drawRect(rect.adjusted(-1, 0, 1, 0));
        }
    }
}

} // namespace

std::vector<PlacedRow> visibleRows(TranscriptDocument& document, const ScrollPosition& position)
{
    std::vector<PlacedRow> rows;
    const std::optional<RowRef> first = document.rowAt(position.top());
    if (!first)
        return rows;
    const qreal ratio = document.column().ratio;
    qint64 y = document.topOf(*first) - position.top();
    for (std::optional<RowRef> ref = first; ref && y < position.height(); ref = document.next(*ref)) {
        rows.push_back({*ref, static_cast<qreal>(y) / ratio, false});
        y += document.heightOf(*ref);
    }
    if (const auto sticky = stickyHeader(document, position, *first))
        rows.push_back(*sticky);
    return rows;
}

void paintTranscript(QPainter& painter, TranscriptDocument& document, const std::vector<PlacedRow>& rows,
                     const TranscriptMarks& marks, const QRectF& clip)
{
    const auto& [selection, finder, attention] = marks;
    const TranscriptModel& model = document.model();
    for (const PlacedRow& placed : rows) {
        const RowRef ref = placed.ref;
        const RowLayout& layout = document.layout(ref);
        const QRectF area = clip.translated(0, -placed.y);
        if (area.bottom() < -8 || area.top() > layout.height() + 8)
            continue;
        RowPaint state{document.style(), model.message(ref.message), model.now(), area};
        if (!selection.isEmpty()) {
            const auto stretch =
                selection.within(ref, static_cast<int>(document.row(ref).plainText().size()));
            state.selectionStart = stretch.start;
            state.selectionEnd = stretch.end;
        }
        if (attention.hovered && attention.hovered->row == ref)
            state.hovered = attention.hovered->index;
        state.isActive = attention.activeMessage == ref.message ||
                         (attention.focused && attention.focused->row.message == ref.message);
        state.isOpen = document.isThinkingOpen(ref.message);
        state.wasCopied = attention.copied == ref;
        state.isSticky = placed.isSticky;
        painter.save();
        painter.translate(0, placed.y);
        layout.paint(painter, state);
        paintFound(painter, document, finder, placed);
        painter.restore();
    }
    // Last, so that the row below does not cover the lower half of a ring.
    for (const PlacedRow& placed : rows) {
        if (attention.focused && attention.focused->row == placed.ref)
            paintFocusRing(painter, document, placed, attention.focused->index);
    }
}

} // namespace varnel
