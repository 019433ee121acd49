#pragma once

#include "base/Clock.h"
#include "base/JsonReader.h"
#include "base/JsonWriter.h"
#include "store/ConversationKinds.h"

#include <QString>
#include <QUuid>

#include <optional>

namespace varnel {

/// One message of a conversation.
struct ChatMessage
{
    QUuid id;
    ChatRole role = ChatRole::User;
    QString content;
    /// The model's reasoning, empty when there is none.
    QString thinking;
    Instant createdAt;
    /// A short label of what produced the message; may be empty for the user's own.
    QString backend;
    /// How long the reply took, in seconds; finite.
    std::optional<double> duration;

    bool operator==(const ChatMessage&) const = default;
};

/// Throws DecodeError when a key is missing or holds the wrong type; only "thinking" and "duration" may be
/// missing.
ChatMessage decodeChatMessage(JsonValue value);
void writeChatMessage(JsonWriter& writer, const ChatMessage& message);

} // namespace varnel
