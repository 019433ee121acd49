#pragma once

#include "store/ChatMessage.h"
#include "store/PromptMedia.h"

#include <QByteArray>
#include <QJsonArray>
#include <QString>

#include <optional>
#include <vector>

namespace varnel {

/// What a chat request to an Ollama server is made of.
struct ChatRequest
{
    QString model;
    QString systemText;
    /// In order; entries without text and those of the system role are left out.
    std::vector<ChatMessage> history;
    /// Attachments of this turn; images travel with the last user message that has text, others not at all.
    std::vector<PromptMedia> media;
    double temperature = 0;
    qint64 contextLength = 0; ///< tokens
    QString keepAlive;        ///< an Ollama duration such as "5m"
    /// At most this many tokens are generated; without it the model decides.
    std::optional<int> predictionLimit;

    bool operator==(const ChatRequest&) const = default;
};

/// What a request adds for a model that may call functions.
struct ToolOffer
{
    /// The functions, in Ollama's form.
    QJsonArray tools;
    /// Says how to use them; the first system message unless it is empty.
    QString guidance{};
    /// The calls and results since the user's message, in Ollama's form; they follow the history.
    QJsonArray messages{};

    bool operator==(const ToolOffer&) const = default;
};

/// The JSON body of POST /api/chat for a reply streamed line by line.
QByteArray streamedChatBody(const ChatRequest& request);

/// The JSON body of POST /api/chat for a reply in one piece, from a model that may call functions.
QByteArray wholeChatBody(const ChatRequest& request, const ToolOffer& offer);

} // namespace varnel
