#pragma once

#include "base/Worker.h"
#include "store/ChatSession.h"

#include <QString>
#include <QUuid>

#include <set>
#include <stop_token>
#include <vector>

namespace varnel {

/// The conversations with a message that holds every word of the query, in any order and case. Their texts
/// are shared with the caller, not copied, and are read on the worker's thread. Throws Cancelled.
Task<std::set<QUuid>> conversationsWith(Worker* worker, const std::vector<ChatSession>& sessions,
                                        QString query, std::stop_token stop);

/// Whether a text holds every word of the query, in any order and case.
bool holdsWords(const QString& text, const QString& query);

} // namespace varnel
