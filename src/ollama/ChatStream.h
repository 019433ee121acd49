#pragma once

#include "base/HttpClient.h"
#include "base/JsonReader.h"
#include "base/LineSplitter.h"
#include "base/Task.h"
#include "ollama/OllamaTypes.h"

#include <exception>
#include <optional>
#include <stop_token>

namespace varnel {

/// A chat reply as it streams in. The request is sent by the first next(); destroying the stream closes its
/// connection. The HTTP client and this object must outlive a next() that is under way.
class ChatStream
{
public:
    ChatStream(HttpClient& http, HttpRequest request, std::stop_token stop);

    /// The next piece; nothing at the end of a reply that ended well. Throws OllamaError, TransportError
    /// (after the pieces that arrived before it) or Cancelled.
    Task<std::optional<ChatDelta>> next();

private:
    enum class Progress { Reading, Done, Broken };

    Task<void> open();
    Task<void> readMore();
    void take(const LineSplitter::Line& line);
    std::optional<ChatDelta> takeDelta();
    void finish();

    HttpClient& m_http;
    HttpRequest m_request;
    std::stop_token m_stop;
    std::optional<HttpResponse> m_response;
    LineSplitter m_lines;
    JsonParser m_parser;

    Progress m_progress = Progress::Reading;
    bool m_bodyEnded = false;
    std::exception_ptr m_failure;
    bool m_anyDelta = false;
    // What the last line held and was not handed out yet.
    QString m_thinking;
    QString m_reply;
};

} // namespace varnel
