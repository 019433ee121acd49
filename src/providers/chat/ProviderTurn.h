#pragma once

#include "providers/RemoteProvider.h"
#include "store/ChatMessage.h"
#include "store/PromptMedia.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QStringList>

#include <vector>

namespace varnel {

/// A message of a conversation as a provider is sent it.
struct ProviderMessage
{
    ChatRole role = ChatRole::User;
    QString text;
    /// In order; "application/pdf" is a document, everything else an image.
    std::vector<PromptMedia> media;

    bool operator==(const ProviderMessage&) const = default;
};

/// What a model that asked for tools is shown of it when it is asked again.
struct ToolRound
{
    /// The assistant message as the provider sent it (ProviderAnswer::message): some models insist on every
    /// key of it.
    QJsonObject message;
    /// The results of its calls from the first on. Calls behind the last result were not executed and are
    /// not repeated, because a call without a result is refused.
    QStringList results;

    bool operator==(const ToolRound&) const = default;
};

/// Whether the provider searches the web itself.
enum class ProviderSearch { Off, Own };

/// What a request to a provider is made of.
struct ProviderTurn
{
    RemoteProvider provider = RemoteProvider::Gemini;
    QString model;
    /// As resolved; empty if there is none.
    QString key;
    QString systemPrompt;
    /// In order. Those of the system role join the system text; those with neither text nor media are left
    /// out.
    std::vector<ProviderMessage> messages;
    double temperature = 0;
    ProviderSearch search = ProviderSearch::Off;

    /// The functions that the model may call; OpenAI, DeepSeek and OpenRouter only, and not together with a
    /// search of their own.
    QJsonArray tools;
    /// A system message before the system text that says how to use the tools; sent along with them only.
    QString toolGuidance;
    /// The calls and results of this turn so far.
    std::vector<ToolRound> toolRounds;

    bool operator==(const ProviderTurn&) const = default;
};

/// The messages of a conversation, with the attachments of the turn on the last one of the user.
std::vector<ProviderMessage> providerMessages(const std::vector<ChatMessage>& history,
                                              std::vector<PromptMedia> media);

/// The system prompt and the system messages of the history, each trimmed, a line each; empty if all are.
QString systemTextOf(const ProviderTurn& turn);

} // namespace varnel
