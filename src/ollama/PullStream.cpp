#include "ollama/PullStream.h"

#include "base/Text.h"
#include "ollama/OllamaError.h"
#include "ollama/OllamaStatus.h"

namespace varnel {

namespace {

/// A failure is a text, but must not pass unnoticed if it is anything else.
QString decodeFailure(JsonValue value)
{
    const QByteArray json = value.text();
    return json.startsWith('"') ? value.string() : QString::fromUtf8(json);
}

StatusChunk decodeStatusChunk(JsonValue value)
{
    const JsonObject chunk = value.object();
    return {
        .status = chunk.optional("status", &JsonValue::string),
        .error = chunk.optional("error", &decodeFailure),
        .completed = chunk.optional("completed", &JsonValue::integer),
        .total = chunk.optional("total", &JsonValue::integer),
    };
}

} // namespace

PullStream::PullStream(HttpClient& http, HttpRequest request, std::stop_token stop)
    : m_http(http)
    , m_request(std::move(request))
    , m_stop(std::move(stop))
{}

Task<std::optional<StatusChunk>> PullStream::next()
{
    if (!m_response) {
        m_response = co_await m_http.send(std::move(m_request), m_stop);
        if (!m_response->isSuccess())
            throw co_await errorOfStatus(*m_response);
    }
    while (true) {
        if (m_stop.stop_requested())
            throw Cancelled();
        if (std::optional<StatusChunk> chunk = takeChunk())
            co_return chunk;
        const std::optional<QByteArray> bytes = co_await m_response->next();
        if (bytes) {
            m_lines.append(*bytes);
            continue;
        }
        m_lines.finish();
        co_return takeChunk();
    }
}

std::optional<StatusChunk> PullStream::takeChunk()
{
    while (const std::optional<LineSplitter::Line> line = m_lines.next()) {
        if (line->tooLong)
            throw OllamaError::api(QStringLiteral("Ollama returned an unreadable reply."));
        if (line->text.empty() || !isUtf8(line->text))
            continue;
        try {
            return decodeStatusChunk(m_parser.parsePadded(line->text));
        } catch (const DecodeError&) {
            continue;
        }
    }
    return std::nullopt;
}

} // namespace varnel
