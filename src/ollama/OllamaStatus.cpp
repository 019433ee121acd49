#include "ollama/OllamaStatus.h"

#include "base/JsonReader.h"
#include "base/Text.h"

namespace varnel {

namespace {

constexpr qint64 errorBodyLimit = 1024 * 1024;

std::optional<QString> reportedError(QByteArrayView body)
{
    try {
        JsonParser parser;
        const JsonValue value =
            parser.parse(std::string_view(body.data(), static_cast<std::size_t>(body.size())));
        return value.object().optional("error", &JsonValue::string);
    } catch (const DecodeError&) {
        return std::nullopt;
    }
}

} // namespace

Task<OllamaError> errorOfStatus(HttpResponse& response)
{
    const QByteArray body = co_await response.readUpTo(errorBodyLimit);
    if (const std::optional<QString> error = reportedError(body))
        co_return OllamaError::api(*error);
    const QByteArrayView text =
        body.size() < errorBodyLimit ? QByteArrayView(body) : withoutCutCharacter(body);
    // An empty page says nothing, so the status speaks for it.
    if (text.isEmpty() || !isUtf8(text))
        co_return OllamaError::unreachable(QStringLiteral("HTTP %1").arg(response.status()));
    co_return OllamaError::unreachable(textOf({text.data(), static_cast<std::size_t>(text.size())}));
}

} // namespace varnel
