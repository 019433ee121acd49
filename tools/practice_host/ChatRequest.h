#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

namespace varnel::practice {

struct ChatMessage
{
    QString role;
    QString content;
    /// The bytes of its images, decoded.
    std::vector<QByteArray> images;

    bool operator==(const ChatMessage&) const = default;
};

/// What a client asks a model.
struct ChatRequest
{
    QString model;
    std::vector<ChatMessage> messages{};
    bool stream = true;
    bool offersTools = false;
    /// After how many pieces the reply ends; nothing means never.
    std::optional<qint64> pieceLimit{};

    bool operator==(const ChatRequest&) const = default;

    /// The text of the user's last message.
    QString prompt() const;
    /// The images of all messages, in order.
    std::vector<QByteArray> images() const;
    /// The results of the tools that were run since the user's last message.
    QStringList toolResults() const;
};

/// Throws DecodeError if the body is no chat request.
ChatRequest decodeChatRequest(const QByteArray& body);

} // namespace varnel::practice
