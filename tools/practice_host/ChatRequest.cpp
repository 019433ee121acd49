#include "practice_host/ChatRequest.h"

#include "base/JsonReader.h"

#include <QStringList>

#include <algorithm>

namespace varnel::practice {

namespace {

QByteArray decodeImage(JsonValue value)
{
    const std::string_view text = value.utf8();
    auto decoded =
        QByteArray::fromBase64Encoding(QByteArray(text.data(), static_cast<qsizetype>(text.size())),
                                       QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded)
        throw DecodeError({}, QStringLiteral("no Base64 text"));
    return std::move(*decoded);
}

ChatMessage decodeMessage(JsonValue value)
{
    const JsonObject object = value.object();
    return {.role = object.required("role", &JsonValue::string),
            .content = object.optional("content", &JsonValue::string).value_or(QString()),
            .images = object.optional("images", listOf(decodeImage)).value_or(std::vector<QByteArray>())};
}

/// Objects of a form that is the client's business.
bool decodeObject(JsonValue value)
{
    value.object();
    return true;
}

/// A call that is sent back must carry its arguments as an object; real hosts refuse a text in their place.
void checkToolCalls(JsonValue message)
{
    const auto checkCall = [](JsonValue call) {
        return call.object().required("function", [](JsonValue function) {
            return function.object().required("arguments", decodeObject);
        });
    };
    static_cast<void>(message.object().optional("tool_calls", listOf(checkCall)));
}

ChatMessage decodeCheckedMessage(JsonValue value)
{
    checkToolCalls(value);
    return decodeMessage(value);
}

} // namespace

QString ChatRequest::prompt() const
{
    const auto last = std::find_if(messages.rbegin(), messages.rend(), [](const ChatMessage& message) {
        return message.role == QLatin1String("user");
    });
    return last == messages.rend() ? QString() : last->content;
}

std::vector<QByteArray> ChatRequest::images() const
{
    std::vector<QByteArray> all;
    for (const ChatMessage& message : messages)
        all.insert(all.end(), message.images.begin(), message.images.end());
    return all;
}

QStringList ChatRequest::toolResults() const
{
    QStringList results;
    for (const ChatMessage& message : messages) {
        if (message.role == QLatin1String("user"))
            results.clear();
        else if (message.role == QLatin1String("tool"))
            results.append(message.content);
    }
    return results;
}

ChatRequest decodeChatRequest(const QByteArray& body)
{
    JsonParser parser;
    const JsonObject object =
        parser.parse(std::string_view(body.constData(), static_cast<std::size_t>(body.size()))).object();
    ChatRequest request;
    request.model = object.required("model", &JsonValue::string);
    request.messages =
        object.optional("messages", listOf(decodeCheckedMessage)).value_or(std::vector<ChatMessage>());
    request.stream = object.optional("stream", &JsonValue::boolean).value_or(true);
    request.offersTools =
        !object.optional("tools", listOf(decodeObject)).value_or(std::vector<bool>()).empty();
    const auto limit = object.optional("options", [](JsonValue options) {
        return options.object().optional("num_predict", &JsonValue::integer).value_or(-1);
    });
    // Real hosts take a negative number as "no limit".
    if (limit && *limit >= 0)
        request.pieceLimit = limit;
    return request;
}

} // namespace varnel::practice
