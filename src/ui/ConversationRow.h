#pragma once

#include "base/Clock.h"
#include "store/ChatSession.h"

#include <QDateTime>
#include <QString>
#include <QUuid>

namespace varnel {

/// A conversation as the list shows it.
struct ConversationRow
{
    QUuid id;
    QString title;
    QString preview;
    QString time;
    /// The heading that it stands under.
    QString group;
    bool pinned = false;
    bool streaming = false;
    bool unseen = false;
    bool current = false;
    /// Where the words of a search stand in the preview; a length of 0 for nowhere.
    int hitStart = 0;
    int hitLength = 0;

    bool operator==(const ConversationRow&) const = default;
};

/// The row of a conversation at a moment; its marks for streaming, unseen and current are left off.
/// @param now the present in the zone whose days count.
ConversationRow rowOf(const ChatSession& session, const QDateTime& now);

/// The beginning of a text in one line, without the marks that open a heading, a list or a quote.
QString previewOf(const QString& text);

} // namespace varnel
