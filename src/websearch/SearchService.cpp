#include "websearch/SearchService.h"

#include "base/Error.h"
#include "base/JsonReader.h"
#include "base/JsonWriter.h"
#include "providers/chat/KeyMask.h"
#include "providers/credentials/KeyLookup.h"
#include "store/HttpUrl.h"
#include "websearch/Deadline.h"
#include "websearch/PageFetch.h"
#include "websearch/PageText.h"

#include <QStringDecoder>

namespace varnel {

namespace {

constexpr qint64 replyLimit = 4LL * 1024 * 1024;
constexpr qint64 errorBodyLimit = 64LL * 1024;
constexpr qsizetype failureLimit = 240;
constexpr qsizetype resultLimit = 6000;
constexpr std::size_t mostResults = 10;
constexpr qsizetype longestAddress = 16LL * 1024;

QString failureName(SearchBackend backend)
{
    return backend == SearchBackend::Brave ? QStringLiteral("Brave Search") : QStringLiteral("Ollama search");
}

HttpRequest ollamaRequest(const SearchService& service, const char* path,
                          const std::function<void(JsonWriter&)>& writeBody)
{
    HttpRequest request;
    request.method = "POST";
    request.url = endpointUrl(service.base, QLatin1String(path));
    request.headers = {{"Authorization", "Bearer " + service.key.toUtf8()},
                       {"Content-Type", "application/json"}};
    request.body = compactJson([&writeBody](JsonWriter& writer) {
        writer.beginObject();
        writeBody(writer);
        writer.endObject();
    });
    request.idleTimeout = service.timeLimit;
    return request;
}

HttpRequest ollamaSearch(const SearchService& service, const QString& query, int count)
{
    return ollamaRequest(service, "api/web_search", [&query, count](JsonWriter& writer) {
        writer.key("query");
        writer.string(query);
        writer.key("max_results");
        writer.integer(count);
    });
}

HttpRequest braveSearch(const SearchService& service, const QString& query, int count)
{
    HttpRequest request;
    request.url = endpointUrl(service.base, QStringLiteral("res/v1/web/search"));
    // Encoded by hand: a plus sign would arrive as a blank.
    request.url.setQuery(
        QString::fromLatin1("q=" + QUrl::toPercentEncoding(query) + "&count=" + QByteArray::number(count)),
        QUrl::StrictMode);
    if (!request.url.isValid() || request.url.host().isEmpty() ||
        request.url.toEncoded().size() > longestAddress)
        throw Error(QStringLiteral("Search could not start."));
    request.headers = {{"Accept", "application/json"}, {"X-Subscription-Token", service.key.toUtf8()}};
    request.idleTimeout = service.timeLimit;
    return request;
}

/// A key that ends its header would begin another.
void requireSendableKey(const SearchService& service)
{
    if (!isSendableKey(service.key))
        throw Error(QStringLiteral("The %1 search key holds a line break or a NUL character.")
                        .arg(displayName(service.backend)));
}

/// What the service said to a request that it refused; some repeat the key.
QString refusal(const QByteArray& body, int status, const QString& key)
{
    QStringDecoder decoder(QStringConverter::Utf8);
    const QString text = decoder.decode(body);
    if (decoder.hasError() || text.trimmed().isEmpty())
        return QStringLiteral("HTTP %1").arg(status);
    return firstCharacters(withoutKey(text, key), failureLimit);
}

std::vector<WebResult> decodeResults(JsonValue reply, SearchBackend backend)
{
    const bool brave = backend == SearchBackend::Brave;
    std::optional<JsonObject> holder = reply.object();
    if (brave)
        holder = holder->optional("web", &JsonValue::object);
    const auto decodeResult = [brave](JsonValue value) {
        const JsonObject item = value.object();
        const auto text = [&item](const char* key) {
            return item.optional(key, &JsonValue::string).value_or(QString()).trimmed();
        };
        return WebResult{text("title"), text("url"), text(brave ? "description" : "content")};
    };
    std::vector<WebResult> results;
    if (holder)
        results = holder->optional("results", listOf(decodeResult)).value_or(std::vector<WebResult>());
    std::erase_if(results, [](const WebResult& result) { return result.url.isEmpty(); });
    if (results.size() > mostResults)
        results.resize(mostResults);
    return results;
}

template <typename Decode>
auto decodeBody(const QByteArray& body, Decode decode)
{
    JsonParser parser;
    return decode(parser.parse(std::string_view(body.data(), static_cast<std::size_t>(body.size()))));
}

Task<std::vector<WebResult>> ask(HttpClient* http, SearchService service, HttpRequest request,
                                 std::stop_token stop)
{
    const QString failed = failureName(service.backend) + QStringLiteral(" failed: ");
    HttpResponse response = co_await http->send(std::move(request), stop);
    if (!response.isSuccess()) {
        const QByteArray body = co_await response.readUpTo(errorBodyLimit);
        throw Error(failed + refusal(body, response.status(), service.key));
    }
    const QByteArray body = co_await response.readAll(replyLimit);
    std::vector<WebResult> results;
    try {
        results =
            decodeBody(body, [&service](JsonValue reply) { return decodeResults(reply, service.backend); });
    } catch (const DecodeError& error) {
        throw Error(failed + error.introducedBy(QStringLiteral("its reply could not be read:")).message());
    }
    if (results.empty())
        throw Error(QStringLiteral("Nothing came back for that search."));
    co_return results;
}

Error tooSlow(const QString& name, const Deadline& deadline)
{
    const double seconds = std::chrono::duration<double>(deadline.limit()).count();
    return Error(QStringLiteral("%1 did not answer within %2 seconds.").arg(name, QString::number(seconds)));
}

Task<QString> readThroughOllama(HttpClient* http, SearchService service, QString url, std::stop_token stop)
{
    requireSendableKey(service);
    HttpRequest request = ollamaRequest(service, "api/web_fetch", [&url](JsonWriter& writer) {
        writer.key("url");
        writer.string(url);
    });
    request.headers.push_back({"User-Agent", "Varnel"});
    HttpResponse response = co_await http->send(std::move(request), std::move(stop));
    if (!response.isSuccess())
        throw Error(QStringLiteral("Could not fetch that page (HTTP %1).").arg(response.status()));
    const QByteArray body = co_await response.readAll(replyLimit);
    const PageText page = decodeBody(body, [](JsonValue reply) {
        const JsonObject object = reply.object();
        const auto text = [&object](const char* key) {
            return object.optional(key, &JsonValue::string).value_or(QString()).trimmed();
        };
        return PageText{text("title"), text("content")};
    });
    co_return page.text.isEmpty() ? QStringLiteral("The page had no text.")
                                  : pageResult(page.title, page.text, url);
}

} // namespace

SearchService searchServiceOf(SearchBackend backend, QString key, const ApiBases& bases)
{
    return {.backend = backend,
            .key = std::move(key),
            .base = bases.url(backend == SearchBackend::Brave ? ApiBase::Brave : ApiBase::OllamaWeb)};
}

Task<std::vector<WebResult>> searchWeb(HttpClient* http, SearchService service, QString query, int count,
                                       std::stop_token stop)
{
    requireSendableKey(service);
    HttpRequest request = service.backend == SearchBackend::Brave ? braveSearch(service, query, count)
                                                                  : ollamaSearch(service, query, count);
    const Deadline deadline(stop, service.timeLimit);
    try {
        co_return co_await ask(http, service, std::move(request), deadline.token());
    } catch (const Cancelled&) {
        if (!deadline.hasPassed())
            throw;
        throw tooSlow(failureName(service.backend), deadline);
    }
}

QString searchResult(const std::vector<WebResult>& results)
{
    QString text;
    int number = 0;
    for (const WebResult& result : results) {
        text += QStringLiteral("%1. %2\n   %3\n")
                    .arg(QString::number(++number), result.title.isEmpty() ? result.url : result.title,
                         result.url);
        if (!result.snippet.isEmpty())
            text += QStringLiteral("   ") + result.snippet + u'\n';
        text += u'\n';
    }
    return firstCharacters(text.trimmed(), resultLimit);
}

Task<QString> fetchPageThroughOllama(HttpClient* http, SearchService service, QString url,
                                     std::stop_token stop)
{
    const Deadline deadline(stop, service.timeLimit);
    try {
        co_return co_await readThroughOllama(http, service, url, deadline.token());
    } catch (const Cancelled&) {
        if (!deadline.hasPassed())
            throw;
        co_return tooSlow(QStringLiteral("Ollama's web fetch service"), deadline).message();
    } catch (const DecodeError& error) {
        co_return error.introducedBy(QStringLiteral("The fetched page could not be read:")).message();
    } catch (const Error& error) {
        co_return error.message();
    }
}

} // namespace varnel
