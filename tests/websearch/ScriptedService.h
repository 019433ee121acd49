#pragma once

#include "practice_host/HttpServer.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

#include <algorithm>
#include <memory>
#include <vector>

namespace varnel::test {

struct ScriptedCall
{
    QString name;
    QString arguments;
};

struct ScriptedReply
{
    QString text;
    std::vector<ScriptedCall> calls{};
};

inline ScriptedCall searchFor(const QString& query)
{
    return {QStringLiteral("web_search"), QStringLiteral("{\"query\":\"%1\"}").arg(query)};
}

/// A model behind either kind of service, and the web search that its calls lead to.
class ScriptedService
{
public:
    std::vector<ScriptedReply> replies; // the last one again and again
    QList<QJsonObject> requests;
    QStringList events; // what the web search was asked for, and what was reported before
    QByteArray silentPath;
    int searchStatus = 200;

    ScriptedService()
        : m_server([this](const std::shared_ptr<practice::HttpExchange>& exchange) { answer(exchange); })
    {
        m_server.listen();
    }
    QUrl url() const { return m_server.url(); }
    int openConnections() const { return m_server.openConnections(); }

private:
    void answer(const std::shared_ptr<practice::HttpExchange>& exchange)
    {
        m_kept.push_back(exchange);
        const QJsonObject body = QJsonDocument::fromJson(exchange->body()).object();
        if (exchange->path() == silentPath) {
            events.append(QStringLiteral("silence"));
            return;
        }
        if (exchange->path().startsWith("/api/web")) {
            events.append(QStringLiteral("%1 for %2")
                              .arg(body.value(u"query").toString() + body.value(u"url").toString())
                              .arg(body.value(u"max_results").toInt()));
            exchange->reply(
                searchStatus, "application/json",
                "{\"results\":[{\"title\":\"T\",\"url\":\"https://found.example/a\"}],\"title\":\"P\","
                "\"content\":\"text of https://read.example/\"}");
            return;
        }
        requests.append(body);
        const auto index = std::min<std::size_t>(static_cast<std::size_t>(requests.size()), replies.size());
        const bool provider = exchange->path() == "/v1/chat/completions";
        const QJsonObject message = messageOf(replies.at(index - 1), provider);
        const QJsonObject choice{{QStringLiteral("message"), message}};
        const QJsonObject reply =
            provider ? QJsonObject{{QStringLiteral("choices"), QJsonArray{choice}}} : choice;
        exchange->reply(200, "application/json", QJsonDocument(reply).toJson());
    }

    static QJsonObject messageOf(const ScriptedReply& reply, bool provider)
    {
        QJsonArray calls;
        for (const ScriptedCall& call : reply.calls) {
            const QJsonObject object = QJsonDocument::fromJson(call.arguments.toUtf8()).object();
            QJsonObject entry{{QStringLiteral("function"),
                               QJsonObject{{QStringLiteral("name"), call.name},
                                           {QStringLiteral("arguments"),
                                            provider ? QJsonValue(call.arguments) : QJsonValue(object)}}}};
            if (provider) {
                entry.insert(QStringLiteral("id"), QStringLiteral("id%1").arg(calls.size()));
                entry.insert(QStringLiteral("type"), QStringLiteral("function"));
            }
            calls.append(entry);
        }
        QJsonObject message{{QStringLiteral("role"), QStringLiteral("assistant")},
                            {QStringLiteral("content"), reply.text},
                            {provider ? QStringLiteral("reasoning_content") : QStringLiteral("thinking"),
                             QStringLiteral("because")}};
        if (!calls.isEmpty())
            message.insert(QStringLiteral("tool_calls"), calls);
        return message;
    }

    std::vector<std::shared_ptr<practice::HttpExchange>> m_kept;
    practice::HttpServer m_server;
};

} // namespace varnel::test
