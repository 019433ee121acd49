#pragma once

#include "base/HttpClient.h"
#include "base/JsonReader.h"
#include "base/LineSplitter.h"
#include "base/Task.h"

#include <QString>

#include <optional>
#include <stop_token>

namespace varnel {

/// What a server says while it pulls a model.
struct StatusChunk
{
    std::optional<QString> status;
    /// The pull failed, for this reason.
    std::optional<QString> error;
    /// Bytes of the file that is being fetched: those that are there, and all.
    std::optional<qint64> completed;
    std::optional<qint64> total;

    bool operator==(const StatusChunk&) const = default;
};

/// The progress of a pull as it streams in. The request is sent by the first next(); destroying the stream
/// closes its connection, upon which the server stops pulling and keeps what it has. The HTTP client and this
/// object must outlive a next() that is under way.
class PullStream
{
public:
    PullStream(HttpClient& http, HttpRequest request, std::stop_token stop);

    /// The next chunk, also one that reports a failure; nothing at the end. A line that is none is passed
    /// over. Throws OllamaError, TransportError (after the chunks that arrived before it) or Cancelled.
    Task<std::optional<StatusChunk>> next();

private:
    std::optional<StatusChunk> takeChunk();

    HttpClient& m_http;
    HttpRequest m_request;
    std::stop_token m_stop;
    std::optional<HttpResponse> m_response;
    LineSplitter m_lines;
    JsonParser m_parser;
};

} // namespace varnel
