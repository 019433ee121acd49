#include "ollama/ChatStream.h"

#include "base/Text.h"
#include "ollama/OllamaError.h"
#include "ollama/OllamaStatus.h"

namespace varnel {

namespace {

/// One line of a streamed reply.
struct ChatPiece
{
    QString content;
    QString thinking;
    QString error; ///< trimmed; empty when the line reports none
    bool done = false;
};

ChatPiece decodeChatPiece(JsonValue value)
{
    const JsonObject chunk = value.object();
    ChatPiece piece;
    chunk.optional("message", [&piece](JsonValue message) {
        const JsonObject object = message.object();
        piece.content = object.optional("content", &JsonValue::string).value_or(QString());
        piece.thinking = object.optional("thinking", &JsonValue::string).value_or(QString());
        return true;
    });
    piece.error = chunk.optional("error", &JsonValue::string).value_or(QString()).trimmed();
    piece.done = chunk.optional("done", &JsonValue::boolean).value_or(false);
    return piece;
}

} // namespace

ChatStream::ChatStream(HttpClient& http, HttpRequest request, std::stop_token stop)
    : m_http(http)
    , m_request(std::move(request))
    , m_stop(std::move(stop))
{}

Task<std::optional<ChatDelta>> ChatStream::next()
{
    if (!m_response)
        co_await open();
    while (true) {
        if (std::chrono::steady_clock::now() - m_turnBegan > longestBurst)
            co_await takeTurn();
        if (m_stop.stop_requested())
            throw Cancelled();
        if (std::optional<ChatDelta> delta = takeDelta())
            co_return delta;
        if (m_progress == Progress::Reading) {
            if (const std::optional<LineSplitter::Line> line = m_lines.next()) {
                take(*line);
                continue;
            }
            if (!m_bodyEnded) {
                co_await readMore();
                continue;
            }
        }
        if (!takeRest())
            break;
    }
    finish();
    co_return std::nullopt;
}

Task<void> ChatStream::open()
{
    m_response = co_await m_http.send(std::move(m_request), m_stop);
    if (!m_response->isSuccess())
        throw co_await errorOfStatus(*m_response);
}

Task<void> ChatStream::readMore()
{
    std::optional<QByteArray> bytes;
    try {
        bytes = co_await m_response->next();
    } catch (const TransportError&) {
        m_failure = std::current_exception();
    }
    m_turnBegan = std::chrono::steady_clock::now();
    if (bytes) {
        m_lines.append(*bytes);
    } else {
        m_bodyEnded = true;
        m_lines.finish();
    }
}

Task<void> ChatStream::takeTurn()
{
    m_response->hold(true);
    co_await m_wakeup.turn();
    m_response->hold(false);
    m_turnBegan = std::chrono::steady_clock::now();
}

void ChatStream::take(const LineSplitter::Line& line)
{
    m_silentBytes += line.text.size() + 1;
    if (m_silentBytes > silenceLimit) {
        m_progress = Progress::Broken;
        return;
    }
    if (line.text.empty() && !line.tooLong)
        return;
    const bool readable = isUtf8(line.text);
    if (!readable && !line.tooLong && (line.ended || hasWholeBody()))
        return fail(QStringLiteral("Ollama returned an unreadable reply."));
    // What is no chunk is what a broken connection leaves behind, a character cut in two at the very end
    // included; what came before it stands.
    m_progress = Progress::Broken;
    if (!readable || line.tooLong)
        return;
    ChatPiece piece;
    try {
        const std::optional<JsonValue> value = m_parser.tryPadded(line.text);
        if (!value)
            return;
        piece = decodeChatPiece(*value);
    } catch (const DecodeError&) {
        return;
    }
    m_progress = piece.done ? Progress::Done : Progress::Reading;
    if (!piece.error.isEmpty())
        return fail(piece.error);
    if (!piece.thinking.isEmpty())
        m_thinkBlock.expectNone();
    ThinkBlock::Parts content = m_thinkBlock.take(piece.content);
    m_thinking = piece.thinking + content.thinking;
    m_reply = std::move(content.reply);
}

/// Ends the reply with an error, once what came before it is handed out.
void ChatStream::fail(const QString& message)
{
    m_progress = Progress::Broken;
    m_failure = std::make_exception_ptr(OllamaError::api(message));
}

/// Whether the body has come to an end that was announced, so that nothing of it can be missing.
bool ChatStream::hasWholeBody() const
{
    return m_bodyEnded && !m_failure &&
           !(m_response->header("Content-Length") + m_response->header("Transfer-Encoding")).isEmpty();
}

std::optional<ChatDelta> ChatStream::takeDelta()
{
    // The reasoning of a line comes before its answer.
    std::optional<ChatDelta> delta;
    if (!m_thinking.isEmpty())
        delta = {ChatDelta::Kind::Thinking, std::exchange(m_thinking, QString())};
    else if (!m_reply.isEmpty())
        delta = {ChatDelta::Kind::Reply, std::exchange(m_reply, QString())};
    if (delta) {
        m_anyDelta = true;
        m_silentBytes = 0;
    }
    return delta;
}

/// Nothing comes any more that could make a tag of what was kept; whether there was anything.
bool ChatStream::takeRest()
{
    ThinkBlock::Parts rest = m_thinkBlock.finish();
    m_thinking = std::move(rest.thinking);
    m_reply = std::move(rest.reply);
    return !m_thinking.isEmpty() || !m_reply.isEmpty();
}

void ChatStream::finish()
{
    if (m_failure && m_progress != Progress::Done)
        std::rethrow_exception(m_failure);
    if (m_anyDelta)
        return;
    if (m_progress == Progress::Done)
        throw OllamaError::withoutReply();
    throw OllamaError::interrupted();
}

} // namespace varnel
