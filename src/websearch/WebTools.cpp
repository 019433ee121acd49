#include "websearch/WebTools.h"

#include "base/JsonReader.h"
#include "websearch/PublicHost.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace varnel {

namespace {

constexpr int usualResults = 5;

/// The arguments of a call. Models write them: what is missing or of another type counts as not given.
struct ToolArguments
{
    QString query;
    QString url;
    int count = usualResults;
};

/// The value of a key, nothing if it cannot be read as asked.
template <typename Decode>
auto lenient(const JsonObject& object, const char* key, Decode decode)
    -> decltype(object.optional(key, decode))
{
    try {
        return object.optional(key, decode);
    } catch (const DecodeError&) {
        return std::nullopt;
    }
}

int resultCount(const JsonObject& object)
{
    const std::optional<double> number = lenient(object, "max_results", &JsonValue::number);
    if (!number || std::trunc(*number) != *number)
        return usualResults;
    return static_cast<int>(std::clamp(*number, 1.0, 10.0));
}

ToolArguments decodeArguments(const QString& text)
{
    const QByteArray utf8 = text.toUtf8();
    JsonParser parser;
    try {
        const JsonObject object =
            parser.parse(std::string_view(utf8.data(), static_cast<std::size_t>(utf8.size()))).object();
        return {.query = lenient(object, "query", &JsonValue::string).value_or(QString()).trimmed(),
                .url = lenient(object, "url", &JsonValue::string).value_or(QString()).trimmed(),
                .count = resultCount(object)};
    } catch (const DecodeError&) {
        return {};
    }
}

} // namespace

WebTools::WebTools(SearchService service, HttpClient& http, PageNetwork& network, WebToolHooks hooks,
                   const QStringList& userTexts, PageLimits limits)
    : m_service(std::move(service))
    , m_http(&http)
    , m_network(&network)
    , m_hooks(std::move(hooks))
    , m_limits(limits)
{
    for (const QString& text : userTexts)
        m_known.learn(text);
}

Task<QString> WebTools::run(SearchToolCall call, std::stop_token stop)
{
    const ToolArguments arguments = decodeArguments(call.arguments);
    if (call.name == QStringView(webSearchName)) {
        if (arguments.query.isEmpty())
            co_return QStringLiteral("web_search needs a query.");
        co_return co_await search(arguments.query, arguments.count, std::move(stop));
    }
    if (call.name == QStringView(webFetchName)) {
        if (!publicPageUrl(arguments.url))
            co_return QStringLiteral("web_fetch only accepts a public http or https URL.");
        co_return co_await read(arguments.url, std::move(stop));
    }
    co_return QStringLiteral("Unknown tool ") + call.name;
}

Task<QString> WebTools::search(QString query, int count, std::stop_token stop)
{
    report(WebLookup::Kind::Search, query);
    try {
        const QString result =
            searchResult(co_await searchWeb(m_http, m_service, query, count, std::move(stop)));
        m_known.learn(result);
        co_return result;
    } catch (const Error& error) {
        // Nothing is learned from it: a refusal may repeat the query, which the model made up.
        co_return error.message();
    }
}

Task<QString> WebTools::read(QString url, std::stop_token stop)
{
    if (m_hooks.approve && !m_known.contains(url)) {
        const bool approved = co_await m_hooks.approve(url, stop);
        if (!approved)
            co_return QStringLiteral("The user did not allow reading that page.");
    }
    report(WebLookup::Kind::Read, url);
    QString result;
    if (m_service.backend == SearchBackend::Ollama)
        result = co_await fetchPageThroughOllama(m_http, m_service, url, std::move(stop));
    else
        result = co_await fetchPage(m_http, m_network, url, m_limits, std::move(stop));
    m_known.learn(result);
    co_return result;
}

void WebTools::report(WebLookup::Kind kind, const QString& subject) const
{
    if (m_hooks.onLookup)
        m_hooks.onLookup({.kind = kind, .subject = subject});
}

} // namespace varnel
