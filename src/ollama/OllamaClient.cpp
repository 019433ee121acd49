#include "ollama/OllamaClient.h"

#include "base/JsonReader.h"
#include "base/Text.h"
#include "ollama/OllamaError.h"
#include "ollama/OllamaStatus.h"
#include "ollama/ThinkBlock.h"
#include "store/HttpUrl.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QUrlQuery>

namespace varnel {

namespace {

// Far above any list of models; it keeps a server that never stops sending from filling the memory.
constexpr qint64 replyLimit = 64 * 1024 * 1024;
constexpr qint64 libraryPageLimit = 16 * 1024 * 1024;

QByteArray jsonBody(const QJsonObject& object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

Task<QByteArray> fetch(HttpClient* http, HttpRequest request, std::stop_token stop)
{
    HttpResponse response = co_await http->send(std::move(request), std::move(stop));
    if (!response.isSuccess())
        throw co_await errorOfStatus(response);
    co_return co_await response.readAll(replyLimit);
}

template <typename Decode>
auto decodeReply(const QByteArray& body, Decode decode)
{
    try {
        JsonParser parser;
        return decode(parser.parse(std::string_view(body.data(), static_cast<std::size_t>(body.size()))));
    } catch (const DecodeError& error) {
        throw error.introducedBy(QStringLiteral("The server's reply could not be read:"));
    }
}

OllamaModel decodeModel(JsonValue value)
{
    const JsonObject model = value.object();
    const auto parameterSize = [](JsonValue details) {
        return details.object().optional("parameter_size", &JsonValue::string);
    };
    return {
        .name = model.required("name", &JsonValue::string),
        .size = model.optional("size", &JsonValue::integer),
        .parameterSize = model.optional("details", parameterSize).value_or(std::nullopt),
    };
}

OllamaRunning decodeRunning(JsonValue value)
{
    const JsonObject model = value.object();
    return {
        .name = model.required("name", &JsonValue::string),
        .sizeVRAM = model.optional("size_vram", &JsonValue::integer),
    };
}

Task<std::vector<OllamaModel>> fetchModels(HttpClient* http, HttpRequest request, std::stop_token stop)
{
    const QByteArray body = co_await fetch(http, std::move(request), std::move(stop));
    co_return decodeReply(
        body, [](JsonValue reply) { return reply.object().required("models", listOf(&decodeModel)); });
}

Task<std::vector<OllamaRunning>> fetchRunning(HttpClient* http, HttpRequest request, std::stop_token stop)
{
    const QByteArray body = co_await fetch(http, std::move(request), std::move(stop));
    co_return decodeReply(
        body, [](JsonValue reply) { return reply.object().required("models", listOf(&decodeRunning)); });
}

Task<QString> fetchVersion(HttpClient* http, HttpRequest request, std::stop_token stop)
{
    const QByteArray body = co_await fetch(http, std::move(request), std::move(stop));
    co_return decodeReply(
        body, [](JsonValue reply) { return reply.object().required("version", &JsonValue::string); });
}

WholeChatReply decodeWholeReply(const QByteArray& body)
{
    const auto unexpected = [] {
        return OllamaError::api(QStringLiteral("Ollama returned an unexpected response."));
    };
    JsonParser parser;
    try {
        const JsonObject reply =
            parser.parse(std::string_view(body.data(), static_cast<std::size_t>(body.size()))).object();
        const QString error = reply.optional("error", &JsonValue::string).value_or(QString()).trimmed();
        if (!error.isEmpty())
            throw OllamaError::api(error);
        WholeChatReply decoded;
        const auto message = reply.optional("message", &JsonValue::object);
        if (!message)
            return decoded;
        decoded.content = message->optional("content", &JsonValue::string).value_or(QString());
        decoded.thinking = message->optional("thinking", &JsonValue::string).value_or(QString());
        if (decoded.thinking.isEmpty()) {
            ThinkBlock::Parts parts = splitThinkBlock(decoded.content);
            decoded.content = std::move(parts.reply);
            decoded.thinking = std::move(parts.thinking);
        }
        if (const auto calls = message->optional("tool_calls", &JsonValue::text))
            decoded.toolCalls = QJsonDocument::fromJson(*calls).array();
        return decoded;
    } catch (const DecodeError&) {
        throw unexpected();
    }
}

Task<WholeChatReply> fetchWholeReply(HttpClient* http, HttpRequest request, std::stop_token stop)
{
    const QByteArray body = co_await fetch(http, std::move(request), std::move(stop));
    co_return decodeWholeReply(body);
}

Task<void> sendRemoval(HttpClient* http, HttpRequest request, std::stop_token stop)
{
    co_await fetch(http, std::move(request), std::move(stop));
}

Task<std::vector<OllamaLibraryHit>> fetchLibraryPage(HttpClient* http, QUrl page, QString query,
                                                     std::stop_token stop)
{
    if (query.isEmpty())
        co_return std::vector<OllamaLibraryHit>();
    QUrlQuery items;
    // What is typed is data: a "+" must not arrive as a blank.
    items.addQueryItem(QStringLiteral("q"), QString::fromLatin1(QUrl::toPercentEncoding(query)));
    page.setQuery(items);
    HttpRequest request;
    request.url = page;
    request.headers.push_back({"Accept", "text/html"});
    HttpResponse response = co_await http->send(std::move(request), std::move(stop));
    if (!response.isSuccess())
        throw OllamaError::api(
            QStringLiteral("Ollama library search failed (HTTP %1).").arg(response.status()));
    const QByteArray body = co_await response.readAll(libraryPageLimit);
    co_return isUtf8(body) ? parseLibraryPage(QString::fromUtf8(body), query)
                           : std::vector<OllamaLibraryHit>();
}

} // namespace

OllamaClient::OllamaClient(QUrl baseURL, HttpClient& http, std::chrono::milliseconds idleTimeout)
    : m_baseURL(std::move(baseURL))
    , m_http(&http)
    , m_idleTimeout(idleTimeout)
{}

HttpRequest OllamaClient::request(const QByteArray& method, const char* endpoint, QByteArray body) const
{
    HttpRequest request;
    request.method = method;
    request.url = endpointUrl(m_baseURL, QLatin1String(endpoint));
    request.idleTimeout = m_idleTimeout;
    request.connectTimeout = std::min(request.connectTimeout, m_idleTimeout);
    if (!body.isEmpty()) {
        request.headers.push_back({"Content-Type", "application/json"});
        request.body = std::move(body);
    }
    return request;
}

Task<std::vector<OllamaModel>> OllamaClient::listModels(std::stop_token stop) const
{
    return fetchModels(m_http, request("GET", "api/tags"), std::move(stop));
}

Task<std::vector<OllamaRunning>> OllamaClient::listRunning(std::stop_token stop) const
{
    return fetchRunning(m_http, request("GET", "api/ps"), std::move(stop));
}

Task<QString> OllamaClient::serverVersion(std::stop_token stop) const
{
    return fetchVersion(m_http, request("GET", "api/version"), std::move(stop));
}

ChatStream OllamaClient::chatStream(const ChatRequest& chat, std::stop_token stop) const
{
    return {*m_http, request("POST", "api/chat", streamedChatBody(chat)), std::move(stop)};
}

Task<WholeChatReply> OllamaClient::chatOnce(const ChatRequest& chat, const ToolOffer& offer,
                                            std::stop_token stop) const
{
    return fetchWholeReply(m_http, request("POST", "api/chat", wholeChatBody(chat, offer)), std::move(stop));
}

PullStream OllamaClient::pull(const QString& model, std::stop_token stop) const
{
    const QJsonObject body{{QStringLiteral("name"), model}, {QStringLiteral("stream"), true}};
    return {*m_http, request("POST", "api/pull", jsonBody(body)), std::move(stop)};
}

Task<void> OllamaClient::remove(const QString& model, std::stop_token stop) const
{
    return sendRemoval(m_http, request("DELETE", "api/delete", jsonBody({{QStringLiteral("model"), model}})),
                       std::move(stop));
}

Task<std::vector<OllamaLibraryHit>> OllamaClient::searchLibrary(const QUrl& site, const QString& query,
                                                                std::stop_token stop) const
{
    return fetchLibraryPage(m_http, endpointUrl(site, QStringLiteral("search")), query.trimmed(),
                            std::move(stop));
}

} // namespace varnel
