#include "practice_host/PracticeHost.h"

#include "base/JsonReader.h"
#include "practice_host/LibraryPage.h"
#include "practice_host/LineStream.h"
#include "practice_host/PullLines.h"
#include "practice_host/ReplyTexts.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QUrlQuery>

#include <algorithm>
#include <array>

namespace varnel::practice {

namespace {

void replyJson(HttpExchange& exchange, const QJsonObject& object)
{
    exchange.reply(200, "application/json; charset=utf-8",
                   QJsonDocument(object).toJson(QJsonDocument::Compact));
}

void replyText(HttpExchange& exchange, int status, const QByteArray& text)
{
    exchange.reply(status, "text/plain; charset=utf-8", text);
}

/// Calls `read` with the object that is the request's body. Throws DecodeError if it is none.
template <typename Read>
auto readBody(const HttpExchange& exchange, Read read)
{
    JsonParser parser;
    const QByteArray& body = exchange.body();
    return read(
        parser.parse(std::string_view(body.constData(), static_cast<std::size_t>(body.size()))).object());
}

/// The model of a request; older clients call the key "name".
QString modelName(const JsonObject& body)
{
    const auto name = body.optional("name", &JsonValue::string);
    return name ? *name : body.required("model", &JsonValue::string);
}

/// One line that is safe to print, whatever a client sent.
QString printable(const QByteArray& text)
{
    constexpr qsizetype longest = 200;
    QByteArray line = text.left(longest);
    std::replace_if(line.begin(), line.end(), [](char byte) { return byte < ' ' || byte > '~'; }, '?');
    return QString::fromLatin1(line);
}

/// Sends a client that puts slashes together to the same target with single ones.
void redirectToCleaned(HttpExchange& exchange)
{
    QByteArray target = exchange.target();
    while (target.contains("//"))
        target.replace("//", "/");
    exchange.reply(307, {}, {}, {{"Location", target}});
}

bool hasKey(const HttpExchange& exchange)
{
    const QByteArray credentials = exchange.header("Authorization");
    return credentials.startsWith("Bearer ") && credentials.size() > qsizetype(sizeof "Bearer " - 1);
}

} // namespace

PracticeHost::PracticeHost(PracticePace pace, Log log)
    : m_pace(pace)
    , m_log(std::move(log))
    , m_server([this](const Exchange& exchange) { handle(exchange); })
{}

void PracticeHost::handle(const Exchange& exchange)
{
    if (m_log)
        m_log(QStringLiteral("%1 %2 (%3 bytes)")
                  .arg(printable(exchange->method()), printable(exchange->target()))
                  .arg(exchange->body().size()));
    try {
        route(exchange);
    } catch (const Error& error) {
        replyError(*exchange, 400, error.message());
    }
}

void PracticeHost::route(const Exchange& exchange)
{
    struct Route
    {
        const char* method;
        const char* path;
        void (PracticeHost::*answer)(const Exchange&);
    };
    static constexpr std::array routes = {
        Route{"GET", "/", &PracticeHost::answerRoot},
        Route{"GET", "/api/tags", &PracticeHost::answerTags},
        Route{"GET", "/api/ps", &PracticeHost::answerRunning},
        Route{"GET", "/api/version", &PracticeHost::answerVersion},
        Route{"POST", "/api/chat", &PracticeHost::answerChatRequest},
        Route{"POST", "/api/pull", &PracticeHost::answerPull},
        Route{"DELETE", "/api/delete", &PracticeHost::answerDelete},
        Route{"GET", "/search", &PracticeHost::answerSearch},
        Route{"POST", "/api/web_search", &PracticeHost::answerWebSearch},
        Route{"POST", "/api/web_fetch", &PracticeHost::answerWebFetch},
    };
    const QByteArray path = exchange->path();
    if (path.contains("//")) {
        redirectToCleaned(*exchange);
        return;
    }
    const QByteArray method = exchange->method() == "HEAD" ? QByteArray("GET") : exchange->method();
    bool pathIsKnown = false;
    for (const Route& route : routes) {
        if (path != route.path)
            continue;
        pathIsKnown = true;
        if (method == route.method) {
            (this->*route.answer)(exchange);
            return;
        }
    }
    if (pathIsKnown)
        replyText(*exchange, 405, "405 method not allowed");
    else
        replyText(*exchange, 404, "404 page not found");
}

void PracticeHost::answerRoot(const Exchange& exchange)
{
    replyText(*exchange, 200, "Ollama is running as a practice host: scripted replies, no model");
}

void PracticeHost::answerTags(const Exchange& exchange)
{
    QJsonArray models;
    for (const PracticeModel& model : m_shelf.models())
        models.append(model.toTag());
    replyJson(*exchange, {{QStringLiteral("models"), models}});
}

void PracticeHost::answerRunning(const Exchange& exchange)
{
    QJsonArray models;
    if (const PracticeModel* loaded = m_loaded.isEmpty() ? nullptr : m_shelf.find(m_loaded))
        models.append(loaded->toRunning());
    replyJson(*exchange, {{QStringLiteral("models"), models}});
}

void PracticeHost::answerVersion(const Exchange& exchange)
{
    replyJson(*exchange, {{QStringLiteral("version"), QStringLiteral("0.24.0-practice")}});
}

void PracticeHost::answerChatRequest(const Exchange& exchange)
{
    ChatRequest request = decodeChatRequest(exchange->body());
    if (!m_limitsReplies)
        request.pieceLimit.reset();
    const PracticeModel* model = m_shelf.find(request.model);
    if (!model) {
        replyError(*exchange, 404,
                   QStringLiteral("model '%1' not found, try pulling it first").arg(request.model));
        return;
    }
    m_loaded = model->name;
    answerChat(exchange, request, *model, m_pace, m_streams);
}

void PracticeHost::answerPull(const Exchange& exchange)
{
    struct PullRequest
    {
        QString model;
        bool stream = true;
    };
    const auto request = readBody(*exchange, [](const JsonObject& body) {
        return PullRequest{modelName(body), body.optional("stream", &JsonValue::boolean).value_or(true)};
    });
    if (request.stream) {
        auto lines = pullLines(request.model, [this, model = request.model] { m_shelf.install(model); });
        new LineStream(exchange, {.nextLine = std::move(lines), .pace = m_pace.piece}, &m_streams);
    } else if (ModelShelf::canPull(request.model)) {
        m_shelf.install(request.model);
        replyJson(*exchange, {{QStringLiteral("status"), QStringLiteral("success")}});
    } else {
        replyError(*exchange, 500, QStringLiteral("pull model manifest: file does not exist"));
    }
}

void PracticeHost::answerDelete(const Exchange& exchange)
{
    const QString model = readBody(*exchange, modelName);
    if (m_shelf.remove(model))
        exchange->reply(200, {}, {});
    else
        replyError(*exchange, 404, QStringLiteral("model '%1' not found").arg(model));
}

void PracticeHost::answerSearch(const Exchange& exchange)
{
    const qsizetype query = exchange->target().indexOf('?');
    const QByteArray text = query < 0 ? QByteArray() : exchange->target().sliced(query + 1);
    const QUrlQuery items(QString::fromLatin1(text).replace(QLatin1Char('+'), QStringLiteral("%20")));
    exchange->reply(200, "text/html; charset=utf-8",
                    libraryPage(items.queryItemValue(QStringLiteral("q"), QUrl::FullyDecoded)));
}

void PracticeHost::answerWebSearch(const Exchange& exchange)
{
    if (!hasKey(*exchange)) {
        replyError(*exchange, 401, QStringLiteral("unauthorized"));
        return;
    }
    struct SearchRequest
    {
        QString query;
        qint64 count = 0;
    };
    const auto request = readBody(*exchange, [](const JsonObject& body) {
        return SearchRequest{body.required("query", &JsonValue::string),
                             body.optional("max_results", &JsonValue::integer).value_or(5)};
    });
    QJsonArray results;
    for (qint64 i = 1; i <= std::clamp<qint64>(request.count, 1, 10); ++i)
        results.append(QJsonObject{
            {QStringLiteral("title"), QStringLiteral("Practice result %1").arg(i)},
            {QStringLiteral("url"), QStringLiteral("https://example.org/practice/%1").arg(i)},
            {QStringLiteral("content"),
             QStringLiteral("Nothing was searched. A page about “%1” would be here.").arg(request.query)}});
    replyJson(*exchange, {{QStringLiteral("results"), results}});
}

void PracticeHost::answerWebFetch(const Exchange& exchange)
{
    if (!hasKey(*exchange)) {
        replyError(*exchange, 401, QStringLiteral("unauthorized"));
        return;
    }
    const QString address =
        readBody(*exchange, [](const JsonObject& body) { return body.required("url", &JsonValue::string); });
    replyJson(*exchange,
              {{QStringLiteral("title"), QStringLiteral("Practice page")},
               {QStringLiteral("content"),
                QStringLiteral("Nothing was fetched. The text of %1 would be here.").arg(address)},
               {QStringLiteral("links"), QJsonArray{QStringLiteral("https://example.org/practice")}}});
}

} // namespace varnel::practice
