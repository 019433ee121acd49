#pragma once

#include "base/Worker.h"
#include "store/SessionList.h"

#include <QString>
#include <QUuid>

#include <stop_token>
#include <vector>

namespace varnel {

/// Where a search found its words in a conversation.
struct SessionHit
{
    QUuid session;
    /// The latest message that holds them; null when only the title does.
    QUuid message;
    /// One line of the message around the first word found; empty when only the title holds them.
    QString snippet;
    /// Where that word stands in the snippet.
    qsizetype hitStart = 0;
    qsizetype hitLength = 0;

    bool operator==(const SessionHit&) const = default;
};

/// The conversations whose title or a message of which holds every word of the query, in any order and case,
/// in the order of the list. The texts are shared with the caller, not copied, and read on the worker's
/// threads. Throws Cancelled.
Task<std::vector<SessionHit>> searchSessions(Worker* worker, SessionList sessions, QString query,
                                             std::stop_token stop);

/// Whether a text holds every word of the query, in any order and case.
bool holdsWords(const QString& text, const QString& query);

} // namespace varnel
