#include "providers/chat/ToolRoundWriter.h"

#include <algorithm>

namespace varnel {

namespace {

const auto callsKey = QStringLiteral("tool_calls");
const auto functionKey = QStringLiteral("function");
const auto argumentsKey = QStringLiteral("arguments");

/// A call with everything that is wanted back: an id, its type, and arguments that are a string.
QJsonObject completeCall(QJsonObject call, const QString& id)
{
    call.insert(QStringLiteral("id"), id);
    call.insert(QStringLiteral("type"), functionKey);
    QJsonObject function = call.value(functionKey).toObject();
    const QJsonValue arguments = function.value(argumentsKey);
    if (!arguments.isString()) {
        const QByteArray text = compactJson([&arguments](JsonWriter& writer) { writer.value(arguments); });
        function.insert(argumentsKey, arguments.isObject() ? QString::fromUtf8(text) : QStringLiteral("{}"));
        call.insert(functionKey, function);
    }
    return call;
}

QString idOf(const QJsonObject& call, std::size_t round, qsizetype index)
{
    const QString id = call.value(QStringLiteral("id")).toString();
    return id.isEmpty() ? QStringLiteral("call_%1_%2").arg(round).arg(index) : id;
}

} // namespace

void writeToolRound(JsonWriter& writer, const ToolRound& round, std::size_t number)
{
    const QJsonArray calls = round.message.value(callsKey).toArray();
    const qsizetype count = std::min(calls.size(), round.results.size());
    if (count == 0)
        return;
    QJsonArray executed;
    for (qsizetype i = 0; i < count; ++i) {
        const QJsonObject call = calls.at(i).toObject();
        executed.append(completeCall(call, idOf(call, number, i)));
    }
    QJsonObject message = round.message;
    message.insert(QStringLiteral("role"), QStringLiteral("assistant"));
    message.insert(callsKey, executed);
    if (!message.contains(QStringLiteral("content")))
        message.insert(QStringLiteral("content"), QJsonValue(QJsonValue::Null));
    writer.value(message);
    for (qsizetype i = 0; i < count; ++i) {
        writer.beginObject();
        writer.key("role");
        writer.string(u"tool");
        writer.key("tool_call_id");
        writer.string(executed.at(i).toObject().value(QStringLiteral("id")).toString());
        writer.key("content");
        writer.string(round.results.at(i));
        writer.endObject();
    }
}

} // namespace varnel
