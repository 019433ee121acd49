#include "store/ChatSession.h"

#include "store/StoredValues.h"

#include <QDir>

namespace varnel {

namespace {

RemoteProvider decodeRemoteProvider(JsonValue value)
{
    const QString text = value.string();
    const std::optional<RemoteProvider> provider = remoteProviderFromRawValue(text);
    if (!provider)
        throw unknownValue(text);
    return *provider;
}

} // namespace

std::optional<QUrl> ChatSession::projectURL() const
{
    QString path = projectPath.trimmed();
    if (path.isEmpty())
        return std::nullopt;
    if (path == QLatin1String("~") || path.startsWith(QLatin1String("~/")))
        path.replace(0, 1, QDir::homePath());
    else if (!path.startsWith(QLatin1Char('/')))
        path.prepend(QDir::currentPath() + QLatin1Char('/'));
    // Two slashes in front would make the first folder a host name.
    while (path.startsWith(QLatin1String("//")))
        path.remove(0, 1);
    if (!path.endsWith(QLatin1Char('/')))
        path.append(QLatin1Char('/'));
    return QUrl::fromLocalFile(path);
}

ChatSession decodeChatSession(JsonValue value)
{
    const JsonObject object = value.object();
    return {
        .id = object.required("id", decodeUuid),
        .title = object.required("title", &JsonValue::string),
        .model = object.required("model", &JsonValue::string),
        .systemPrompt = object.required("systemPrompt", &JsonValue::string),
        .projectPath = object.optional("projectPath", &JsonValue::string).value_or(QString()),
        .messages = object.required("messages", listOf(decodeChatMessage)),
        .temperature = object.required("temperature", &JsonValue::number),
        .contextLength = object.required("contextLength", &JsonValue::integer),
        .keepAlive = object.required("keepAlive", &JsonValue::string),
        .answerBackend = object.required("answerBackend", decodeRawValue<AnswerBackend>),
        .remoteProvider = object.required("remoteProvider", decodeRemoteProvider),
        .remoteModel = object.required("remoteModel", &JsonValue::string),
        .search = object.optional("search", decodeRawValue<SearchSource>).value_or(SearchSource::Off),
        .pinned = object.optional("pinned", &JsonValue::boolean).value_or(false),
        .createdAt = object.required("createdAt", decodeInstant),
        .updatedAt = object.required("updatedAt", decodeInstant),
    };
}

void writeChatSession(JsonWriter& writer, const ChatSession& session)
{
    writer.beginObject();
    writer.key("answerBackend");
    writeRawValue(writer, session.answerBackend);
    writer.key("contextLength");
    writer.integer(session.contextLength);
    writer.key("createdAt");
    writeInstant(writer, session.createdAt);
    writer.key("id");
    writeUuid(writer, session.id);
    writer.key("keepAlive");
    writer.string(session.keepAlive);
    writer.key("messages");
    writeList(writer, session.messages, writeChatMessage);
    writer.key("model");
    writer.string(session.model);
    writer.key("pinned");
    writer.boolean(session.pinned);
    writer.key("projectPath");
    writer.string(session.projectPath);
    writer.key("remoteModel");
    writer.string(session.remoteModel);
    writer.key("remoteProvider");
    writer.string(rawValue(session.remoteProvider));
    writer.key("search");
    writeRawValue(writer, session.search);
    writer.key("systemPrompt");
    writer.string(session.systemPrompt);
    writer.key("temperature");
    writer.number(session.temperature);
    writer.key("title");
    writer.string(session.title);
    writer.key("updatedAt");
    writeInstant(writer, session.updatedAt);
    writer.endObject();
}

} // namespace varnel
