#include "websearch/SearchTools.h"

#include <QJsonDocument>
#include <QUuid>

namespace varnel {

namespace {

QJsonObject parameter(const QString& type, const QString& description)
{
    return {{QStringLiteral("type"), type}, {QStringLiteral("description"), description}};
}

QJsonObject definition(const QString& name, const QString& description, const QJsonObject& properties,
                       const QString& required)
{
    const QJsonObject parameters{{QStringLiteral("type"), QStringLiteral("object")},
                                 {QStringLiteral("properties"), properties},
                                 {QStringLiteral("required"), QJsonArray{required}}};
    return {{QStringLiteral("type"), QStringLiteral("function")},
            {QStringLiteral("function"), QJsonObject{{QStringLiteral("name"), name},
                                                     {QStringLiteral("description"), description},
                                                     {QStringLiteral("parameters"), parameters}}}};
}

QString argumentText(const QJsonValue& arguments)
{
    if (arguments.isString())
        return arguments.toString();
    if (arguments.isArray())
        return QString::fromUtf8(QJsonDocument(arguments.toArray()).toJson(QJsonDocument::Compact));
    return QString::fromUtf8(QJsonDocument(arguments.toObject()).toJson(QJsonDocument::Compact));
}

} // namespace

QJsonArray searchToolDefinitions()
{
    const QJsonObject searchProperties{
        {QStringLiteral("query"), parameter(QStringLiteral("string"), QStringLiteral("The search query"))},
        {QStringLiteral("max_results"),
         parameter(QStringLiteral("integer"), QStringLiteral("How many results to return, from 1 to 10"))}};
    const QJsonObject fetchProperties{
        {QStringLiteral("url"), parameter(QStringLiteral("string"), QStringLiteral("The page URL"))}};
    return {
        definition(QString::fromUtf16(webSearchName),
                   QStringLiteral("Search the public web and return titles, URLs, and short excerpts."),
                   searchProperties, QStringLiteral("query")),
        definition(QString::fromUtf16(webFetchName),
                   QStringLiteral("Fetch one public http or https page and return its title and text."),
                   fetchProperties, QStringLiteral("url")),
    };
}

QString searchGuidance()
{
    return QStringLiteral(
        "You can call web_search and web_fetch. Use them when the question depends on "
        "current public information. After the results arrive, answer in your own words and "
        "name the page titles and URLs you used.");
}

std::vector<SearchToolCall> decodeToolCalls(const QJsonArray& calls)
{
    std::vector<SearchToolCall> decoded;
    for (const QJsonValue value : calls) {
        const QJsonObject call = value.toObject();
        const QJsonObject function = call.value(QLatin1String("function")).toObject();
        QString id = call.value(QLatin1String("id")).toString();
        if (id.isEmpty())
            id = QStringLiteral("call_") + QUuid::createUuid().toString(QUuid::Id128);
        decoded.push_back({.id = id,
                           .name = function.value(QLatin1String("name")).toString(),
                           .arguments = argumentText(function.value(QLatin1String("arguments")))});
    }
    return decoded;
}

QJsonObject toOllamaToolCall(const SearchToolCall& call)
{
    const QJsonObject arguments = QJsonDocument::fromJson(call.arguments.toUtf8()).object();
    return {{QStringLiteral("id"), call.id},
            {QStringLiteral("function"),
             QJsonObject{{QStringLiteral("name"), call.name}, {QStringLiteral("arguments"), arguments}}}};
}

} // namespace varnel
