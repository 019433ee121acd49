#pragma once

#include "ui/transcript/TranscriptModel.h"

#include <QColor>
#include <QRectF>

class QPainter;

namespace varnel {

/// All actions in the order they are shown.
inline constexpr TranscriptAction allActions[] = {
    TranscriptAction::Copy,       TranscriptAction::Regenerate, TranscriptAction::Edit,
    TranscriptAction::WriteFiles, TranscriptAction::HandOff,    TranscriptAction::Save,
    TranscriptAction::More,
};

/// What the action is called, for hovering and for reading aloud.
QString actionName(TranscriptAction action);
/// Draws its icon centred in a box, on a grid of 16 by 16 at zoom 1; a tick instead when it was just done.
void paintActionIcon(QPainter& painter, TranscriptAction action, const QRectF& box, qreal zoom,
                     const QColor& colour, bool done);

} // namespace varnel
