// What the parts of AppModel share among themselves.
#pragma once

#include "engine/AppModel.h"

#include <algorithm>

namespace varnel {

/// A conversation that can still be brought back.
struct AppModel::RemovedSession
{
    /// How long it can, of the clock that only moves forward.
    std::chrono::steady_clock::time_point until;
    ChatSession session;
    Draft draft;
    /// The empty conversation that took its place; null if others were left.
    QUuid replacement;
};

/// What an edit replaced, to be put back.
struct AppModel::ReplacedMessages
{
    QUuid session;
    /// The messages as they were, from the first that is gone on.
    std::vector<ChatMessage> messages;
    /// How many stood before them and stay.
    std::size_t kept = 0;
    /// The conversation that a fork made; null for the other edits.
    QUuid fork;
};

ChatMessage makeMessage(ChatRole role, QString content, Instant now);

/// Whether it is a reply of which nothing has come.
inline bool isEmptyReply(const ChatMessage& message)
{
    return message.role == ChatRole::Assistant && message.content.isEmpty() && message.thinking.isEmpty();
}

inline auto findMessage(std::vector<ChatMessage>& messages, const QUuid& id)
{
    return std::find_if(messages.begin(), messages.end(),
                        [&id](const ChatMessage& message) { return message.id == id; });
}

/// The place of a message; how many there are if it is not among them.
inline std::size_t indexOf(const ChatSession& session, const QUuid& id)
{
    const auto found = std::find_if(session.messages.begin(), session.messages.end(),
                                    [&id](const ChatMessage& message) { return message.id == id; });
    return static_cast<std::size_t>(found - session.messages.begin());
}

} // namespace varnel
