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

/// The JSON body of POST /api/chat for a reply streamed line by line.
QByteArray streamedChatBody(const ChatRequest& request);

/// The JSON body of POST /api/chat for a reply in one piece, with the functions that the model may call.
QByteArray wholeChatBody(const ChatRequest& request, const QJsonArray& tools);

} // namespace varnel
