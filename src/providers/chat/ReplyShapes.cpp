#include "providers/chat/ReplyShapes.h"

#include "base/JsonWriter.h"
#include "providers/chat/LenientJson.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QStringList>

namespace varnel {

namespace {

void addSource(ProviderAnswer& answer, const JsonObject& source, std::string_view urlKey)
{
    const QString url = textIn(source, urlKey).trimmed();
    if (!url.isEmpty())
        answer.sources.push_back({.title = textIn(source, "title").trimmed(), .url = url});
}

/// The words of an "error" object or text; empty if there is none.
QString errorIn(const JsonObject& object)
{
    const std::optional<JsonObject> error = objectIn(object, "error");
    if (!error)
        return textIn(object, "error").trimmed();
    const QString message = textIn(*error, "message").trimmed();
    return message.isEmpty() ? QString::fromUtf8(object.find("error")->text()) : message;
}

QString joined(const QStringList& words)
{
    QStringList filled;
    for (const QString& word : words) {
        if (!word.isEmpty())
            filled.append(word);
    }
    return filled.join(QStringLiteral(": "));
}

/// What Gemini says of a prompt or an answer that it kept back.
QString geminiReason(const JsonObject& reply, const std::optional<JsonObject>& candidate)
{
    if (const QString error = errorIn(reply); !error.isEmpty())
        return error;
    if (candidate)
        return joined({textIn(*candidate, "finishReason"), textIn(*candidate, "finishMessage")});
    const std::optional<JsonObject> feedback = objectIn(reply, "promptFeedback");
    return feedback ? joined({textIn(*feedback, "blockReason"), textIn(*feedback, "blockReasonMessage")})
                    : QString();
}

/// The answer, or the reason why it holds nothing.
ReadReply answerOrReason(ProviderAnswer answer, const QString& reason)
{
    const bool isEmpty = answer.text.isEmpty() && answer.thinking.isEmpty() && answer.toolCalls.empty() &&
                         answer.sources.empty();
    if (isEmpty && !reason.isEmpty())
        return NoAnswer{.reason = reason};
    return answer;
}

/// Reads one item of "output". Items of reasoning hold texts too, which are no part of the answer.
void readOutputItem(const JsonObject& item, ProviderAnswer& answer, QString& refusal)
{
    const bool isReasoning = textIn(item, "type") == QLatin1String("reasoning");
    for (const JsonObject& part : objectsIn(item, "content")) {
        (isReasoning ? answer.thinking : answer.text) += textIn(part, "text");
        if (isReasoning)
            continue;
        refusal += textIn(part, "refusal");
        for (const JsonObject& annotation : objectsIn(part, "annotations"))
            addSource(answer, annotation, "url");
    }
}

ReadReply readResponses(const JsonObject& reply, const std::vector<JsonObject>& output)
{
    ProviderAnswer answer;
    QString refusal;
    for (const JsonObject& item : output)
        readOutputItem(item, answer, refusal);
    if (answer.text.isEmpty()) {
        if (!refusal.isEmpty())
            return NoAnswer{.reason = refusal, .isRefusal = true};
        if (const QString error = errorIn(reply); !error.isEmpty())
            return NoAnswer{.reason = error};
    }
    return answer;
}

QString argumentsText(const QJsonValue& arguments)
{
    if (arguments.isString())
        return arguments.toString();
    if (arguments.isUndefined() || arguments.isNull())
        return {};
    return QString::fromUtf8(compactJson([&arguments](JsonWriter& writer) { writer.value(arguments); }));
}

/// The calls of an assistant message, and the message itself for the next request.
void readToolCalls(const JsonObject& message, const JsonValue& raw, ProviderAnswer& answer)
{
    if (objectsIn(message, "tool_calls").empty())
        return;
    QJsonObject whole = QJsonDocument::fromJson(raw.text()).object();
    const auto key = QStringLiteral("tool_calls");
    QJsonArray calls;
    const QJsonArray elements = whole.value(key).toArray();
    for (const QJsonValue element : elements) {
        const QJsonObject call = element.toObject();
        if (!call.value(QStringLiteral("function")).isObject())
            continue;
        const QJsonObject function = call.value(QStringLiteral("function")).toObject();
        answer.toolCalls.push_back({.id = call.value(QStringLiteral("id")).toString(),
                                    .name = function.value(QStringLiteral("name")).toString(),
                                    .arguments = argumentsText(function.value(QStringLiteral("arguments")))});
        calls.append(call);
    }
    whole.insert(key, calls);
    if (!calls.isEmpty())
        answer.message = whole;
}

/// The content is a text or, with some services, a list of parts. Nothing if it is neither.
std::optional<QString> contentOf(const JsonObject& message)
{
    const std::optional<std::vector<JsonObject>> parts = listIn(message, "content");
    if (!parts)
        return stringIn(message, "content");
    QString text;
    for (const JsonObject& part : *parts)
        text += textIn(part, "text");
    return text;
}

/// Why a choice ended, if it was not the model that came to its end.
QString cutReason(const JsonObject& choice)
{
    const QString reason = textIn(choice, "finish_reason");
    return reason == QLatin1String("stop") ? QString() : reason;
}

ReadReply readMessage(const JsonObject& message, const JsonValue& raw, const QString& error,
                      const QString& reason)
{
    ProviderAnswer answer;
    const std::optional<QString> content = contentOf(message);
    answer.text = content.value_or(QString());
    answer.thinking = stringIn(message, "reasoning_content").value_or(textIn(message, "reasoning"));
    readToolCalls(message, raw, answer);
    if (!answer.text.isEmpty() || !answer.toolCalls.empty())
        return answer;
    const QString refusal = textIn(message, "refusal").trimmed();
    if (!refusal.isEmpty())
        return NoAnswer{.reason = refusal, .isRefusal = true};
    if (!error.isEmpty() || !content)
        return NoAnswer{.reason = error.isEmpty() ? reason : error};
    return answerOrReason(std::move(answer), reason);
}

} // namespace

ReadReply readClaudeReply(const JsonObject& reply)
{
    const std::optional<std::vector<JsonObject>> content = listIn(reply, "content");
    if (!content)
        return NoAnswer{.reason = errorIn(reply)};
    ProviderAnswer answer;
    for (const JsonObject& block : *content) {
        answer.text += textIn(block, "text");
        answer.thinking += textIn(block, "thinking");
        if (textIn(block, "type") != QLatin1String("web_search_tool_result"))
            continue;
        for (const JsonObject& result : objectsIn(block, "content"))
            addSource(answer, result, "url");
    }
    const QString error = errorIn(reply);
    return answerOrReason(std::move(answer), error.isEmpty() ? textIn(reply, "stop_reason") : error);
}

ReadReply readGeminiReply(const JsonObject& reply)
{
    const std::vector<JsonObject> candidates = objectsIn(reply, "candidates");
    const std::optional<JsonObject> candidate =
        candidates.empty() ? std::nullopt : std::optional(candidates.front());
    const std::optional<JsonObject> content = candidate ? objectIn(*candidate, "content") : std::nullopt;
    const auto parts = content ? listIn(*content, "parts") : std::nullopt;
    if (!parts)
        return NoAnswer{.reason = geminiReason(reply, candidate)};
    ProviderAnswer answer;
    for (const JsonObject& part : *parts) {
        const std::optional<JsonValue> thought = part.find("thought");
        const bool isThought = thought && thought->isTrue();
        (isThought ? answer.thinking : answer.text) += textIn(part, "text");
    }
    if (const auto metadata = objectIn(*candidate, "groundingMetadata")) {
        for (const JsonObject& chunk : objectsIn(*metadata, "groundingChunks")) {
            if (const std::optional<JsonObject> web = objectIn(chunk, "web"))
                addSource(answer, *web, "uri");
        }
    }
    return answerOrReason(std::move(answer), geminiReason(reply, candidate));
}

ReadReply readOpenAiReply(const JsonObject& reply)
{
    if (const auto output = listIn(reply, "output"))
        return readResponses(reply, *output);
    const std::vector<JsonObject> choices = objectsIn(reply, "choices");
    const std::optional<JsonObject> message =
        choices.empty() ? std::nullopt : objectIn(choices.front(), "message");
    QString error = errorIn(reply);
    if (error.isEmpty() && !choices.empty())
        error = errorIn(choices.front());
    if (!message)
        return NoAnswer{.reason = error};
    return readMessage(*message, *choices.front().find("message"), error, cutReason(choices.front()));
}

} // namespace varnel
