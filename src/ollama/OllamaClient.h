#pragma once

#include "base/HttpClient.h"
#include "base/Task.h"
#include "ollama/ChatRequest.h"
#include "ollama/ChatStream.h"
#include "ollama/LibrarySearch.h"
#include "ollama/OllamaTypes.h"
#include "ollama/PullStream.h"

#include <QJsonArray>
#include <QString>
#include <QUrl>

#include <chrono>
#include <stop_token>
#include <vector>

namespace varnel {

/// A chat reply read in one piece.
struct WholeChatReply
{
    QString content;
    /// The model's reasoning; empty when the server tells none.
    QString thinking;
    /// The function calls that the model asks for, as the server wrote them; empty when it asks for none.
    QJsonArray toolCalls;

    bool operator==(const WholeChatReply&) const = default;
};

/// Speaks Ollama's HTTP API to one server. A value without state of its own: make one whenever the address
/// changes.
///
/// Every operation throws TransportError when no complete answer came, OllamaError for an answer that is a
/// failure, DecodeError for one that is not what was asked for, and Cancelled after a stop. The HTTP client
/// must outlive what it is used for.
class OllamaClient
{
public:
    /// @param baseURL the server's address; a path in it is kept in front of every endpoint's.
    /// @param idleTimeout how long the server may send nothing.
    OllamaClient(QUrl baseURL, HttpClient& http,
                 std::chrono::milliseconds idleTimeout = std::chrono::seconds(600));

    const QUrl& baseURL() const { return m_baseURL; }

    /// The installed models, in the server's order.
    Task<std::vector<OllamaModel>> listModels(std::stop_token stop) const;
    /// The models held in memory, in the server's order.
    Task<std::vector<OllamaRunning>> listRunning(std::stop_token stop) const;
    Task<QString> serverVersion(std::stop_token stop) const;

    /// A reply piece by piece as the model writes it.
    ChatStream chatStream(const ChatRequest& request, std::stop_token stop) const;
    /// A reply in one piece, to a model that may call functions.
    Task<WholeChatReply> chatOnce(const ChatRequest& request, const ToolOffer& offer,
                                  std::stop_token stop) const;

    /// Fetches a model onto the server, chunk by chunk of its progress.
    PullStream pull(const QString& model, std::stop_token stop) const;
    /// Removes a model from the server.
    Task<void> remove(const QString& model, std::stop_token stop) const;
    /// Searches the public library, which is a web site and not this server. White space around the query
    /// does not count; without a query there is no request and no hit.
    /// @param site the address of the library's web site, without "/search".
    Task<std::vector<OllamaLibraryHit>> searchLibrary(const QUrl& site, const QString& query,
                                                      std::stop_token stop) const;

private:
    HttpRequest request(const QByteArray& method, const char* endpoint, QByteArray body = {}) const;

    QUrl m_baseURL;
    HttpClient* m_http;
    std::chrono::milliseconds m_idleTimeout;
};

} // namespace varnel
