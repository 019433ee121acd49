#pragma once

#include "base/HttpClient.h"
#include "base/JsonReader.h"
#include "base/LineSplitter.h"
#include "base/Task.h"
#include "base/Wakeup.h"
#include "ollama/OllamaTypes.h"
#include "ollama/ThinkBlock.h"

#include <chrono>
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

    /// How much may come without any text before the reply counts as broken, in bytes.
    static constexpr std::size_t silenceLimit = 16 * 1024 * 1024;
    /// How long lines are read before the event loop gets its turn, so that a stop is heard in any burst.
    static constexpr std::chrono::milliseconds longestBurst{10};

    Task<void> open();
    Task<void> readMore();
    Task<void> takeTurn();
    void take(const LineSplitter::Line& line);
    void fail(const QString& message);
    bool hasWholeBody() const;
    std::optional<ChatDelta> takeDelta();
    bool takeRest();
    void finish();

    HttpClient& m_http;
    HttpRequest m_request;
    std::stop_token m_stop;
    std::optional<HttpResponse> m_response;
    LineSplitter m_lines;
    JsonParser m_parser;
    ThinkBlock m_thinkBlock;

    Progress m_progress = Progress::Reading;
    bool m_bodyEnded = false;
    std::exception_ptr m_failure;
    bool m_anyDelta = false;
    std::size_t m_silentBytes = 0;
    std::chrono::steady_clock::time_point m_turnBegan;
    Wakeup m_wakeup;
    // What the last line held and was not handed out yet.
    QString m_thinking;
    QString m_reply;
};

} // namespace varnel
