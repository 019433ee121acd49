#pragma once

#include "base/JsonReader.h"
#include "providers/chat/ProviderAnswer.h"

#include <variant>

namespace varnel {

/// A reply that holds no answer.
struct NoAnswer
{
    /// What the service said in its place; may be empty.
    QString reason;
    /// Whether that is the model's own answer about the conversation.
    bool isRefusal = false;

    bool operator==(const NoAnswer&) const = default;
};

using ReadReply = std::variant<ProviderAnswer, NoAnswer>;

// One reader per shape. Keys that are missing or of another kind are passed over wherever an answer remains
// without them: services add and leave out things with every release.

ReadReply readClaudeReply(const JsonObject& reply);
ReadReply readGeminiReply(const JsonObject& reply);
/// Both endpoints of OpenAI, and the chat completions of the others.
ReadReply readOpenAiReply(const JsonObject& reply);

} // namespace varnel
