#pragma once

#include "practice_host/ChatAnswer.h"
#include "practice_host/HttpServer.h"
#include "practice_host/PracticeModels.h"

#include <QJsonObject>

#include <functional>
#include <memory>

namespace varnel::practice {

/// An Ollama host without a model: it answers from scripts, chosen by the model's name, properly or as badly
/// as the name says. Its library search and web tools are on the same port.
class PracticeHost
{
public:
    /// Told about every request, in one line without control characters.
    using Log = std::function<void(const QString&)>;

    explicit PracticeHost(PracticePace pace = {}, Log log = {});

    /// Begins to listen on 127.0.0.1. Throws Error if the port cannot be had.
    /// @param port 0 for any free one.
    void listen(quint16 port = 0) { m_server.listen(port); }
    /// Whether a reply ends at the length that a request asks for (num_predict).
    void setLimitsReplies(bool limits) { m_limitsReplies = limits; }
    quint16 port() const { return m_server.port(); }
    QUrl url() const { return m_server.url(); }

    const HttpServer& server() const noexcept { return m_server; }
    /// Streams that are being sent, silent ones included.
    int activeStreams() const { return static_cast<int>(m_streams.children().size()); }

private:
    using Exchange = std::shared_ptr<HttpExchange>;

    void handle(const Exchange& exchange);
    void route(const Exchange& exchange);
    void answerRoot(const Exchange& exchange);
    void answerTags(const Exchange& exchange);
    void answerRunning(const Exchange& exchange);
    void answerVersion(const Exchange& exchange);
    void answerChatRequest(const Exchange& exchange);
    void answerPull(const Exchange& exchange);
    void answerDelete(const Exchange& exchange);
    void answerSearch(const Exchange& exchange);
    void answerWebSearch(const Exchange& exchange);
    void answerWebFetch(const Exchange& exchange);

    PracticePace m_pace;
    bool m_limitsReplies = true;
    Log m_log;
    ModelShelf m_shelf;
    /// The model that was asked last, the only one that counts as loaded.
    QString m_loaded;
    HttpServer m_server;
    // The parent of all streams; gone before the server, whose exchanges they hold.
    QObject m_streams;
};

} // namespace varnel::practice
