#pragma once

#include "ui/transcript/ScrollPosition.h"
#include "ui/transcript/TranscriptFinder.h"
#include "ui/transcript/TranscriptSelection.h"

class QPainter;

namespace varnel {

/// A target of a row.
struct TargetRef
{
    RowRef row;
    int index = 0;

    auto operator<=>(const TargetRef&) const = default;
};

/// A row in the view, with the place of its top there in logical pixels.
struct PlacedRow
{
    RowRef ref;
    qreal y = 0;
    bool isSticky = false; ///< a code block's header that stays while its lines scroll below it
};

/// What the reader points at and works with; changes how rows are drawn, never their size.
struct TranscriptAttention
{
    std::optional<TargetRef> hovered;
    std::optional<TargetRef> focused;
    int activeMessage = -1;        ///< under the pointer; its actions show
    std::optional<RowRef> hintRow; ///< the pointer rests where this row has more to tell
    std::optional<RowRef> copied;  ///< the row whose text was just copied
};

/// What is drawn over the plain conversation.
struct TranscriptMarks
{
    const TranscriptSelection& selection;
    const TranscriptFinder& finder;
    const TranscriptAttention& attention;
};

/// The rows in view from top to bottom; sticky headers come last, as they lie above the others.
std::vector<PlacedRow> visibleRows(TranscriptDocument& document, const ScrollPosition& position);
/// Draws them.
void paintTranscript(QPainter& painter, TranscriptDocument& document, const std::vector<PlacedRow>& rows,
                     const TranscriptMarks& marks, const QRectF& clip);

} // namespace varnel
