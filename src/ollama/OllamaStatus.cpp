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

/// Without the bytes of a character that was cut in two at the end.
QByteArrayView withoutCutCharacter(QByteArrayView text)
{
    qsizetype length = text.size();
    for (int back = 0; back < 3 && length > 0 && (static_cast<uchar>(text[length - 1]) & 0xC0U) == 0x80;
         ++back)
        --length;
    if (length > 0 && static_cast<uchar>(text[length - 1]) >= 0xC0)
        --length;
    else
        length = text.size();
    return text.first(length);
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
    co_return OllamaError::unreachable(QString::fromUtf8(text));
}

} // namespace varnel
