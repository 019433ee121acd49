#pragma once

#include "ui/transcript/TranscriptModel.h"
#include "ui/transcript/TranscriptStyle.h"
#include "ui/transcript/TranscriptView.h"

#include <QtQml/qqmlregistration.h>

namespace varnel {

/// The transcript's parts as the screens know them.
struct TranscriptViewForScreens
{
    Q_GADGET
    QML_FOREIGN(varnel::TranscriptView)
    QML_NAMED_ELEMENT(TranscriptView)
};

struct TranscriptStyleForScreens
{
    Q_GADGET
    QML_FOREIGN(varnel::TranscriptStyle)
    QML_NAMED_ELEMENT(TranscriptStyle)
};

struct TranscriptModelForScreens
{
    Q_GADGET
    QML_FOREIGN(varnel::TranscriptModel)
    QML_NAMED_ELEMENT(TranscriptModel)
    QML_UNCREATABLE("the feed has one")
};

} // namespace varnel
