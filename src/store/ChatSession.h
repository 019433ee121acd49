#pragma once

#include "base/Clock.h"
#include "base/JsonReader.h"
#include "base/JsonWriter.h"
#include "providers/RemoteProvider.h"
#include "store/ChatMessage.h"
#include "store/ConversationKinds.h"

#include <QString>
#include <QUrl>
#include <QUuid>

#include <optional>
#include <vector>

namespace varnel {

/// One conversation with its messages and the settings it is held with.
struct ChatSession
{
    QUuid id;
    QString title;
    /// The name of the Ollama model.
    QString model;
    QString systemPrompt;
    /// The project folder as the user typed or chose it; may begin with "~", empty when there is none.
    QString projectPath;
    std::vector<ChatMessage> messages;
    double temperature = 0.7;
    /// In tokens.
    qint64 contextLength = 8192;
    /// How long Ollama keeps the model loaded, in its own spelling, for example "5m".
    QString keepAlive;
    AnswerBackend answerBackend = AnswerBackend::Ollama;
    RemoteProvider remoteProvider = RemoteProvider::Gemini;
    QString remoteModel;
    SearchSource search = SearchSource::Off;
    bool pinned = false;
    Instant createdAt;
    Instant updatedAt;

    bool operator==(const ChatSession&) const = default;

    /// The project folder as a local URL that ends with "/"; nothing when projectPath is blank. "~" and "~/…"
    /// stand for the home folder, a relative path begins at the process's current folder. Whether the folder
    /// exists is not looked at.
    std::optional<QUrl> projectURL() const;
};

/// Throws DecodeError when a key is missing or holds the wrong type; only "projectPath", "search" and
/// "pinned" may be missing.
ChatSession decodeChatSession(JsonValue value);
void writeChatSession(JsonWriter& writer, const ChatSession& session);

} // namespace varnel
