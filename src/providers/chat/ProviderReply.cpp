#include "providers/chat/ProviderReply.h"

#include "base/JsonReader.h"
#include "base/Text.h"
#include "providers/chat/KeyMask.h"
#include "providers/chat/ReplyShapes.h"

namespace varnel {

namespace {

ReadReply readReply(RemoteProvider provider, const QByteArray& body)
{
    JsonParser parser;
    try {
        const JsonValue value =
            parser.parse(std::string_view(body.data(), static_cast<std::size_t>(body.size())));
        switch (provider) {
        case RemoteProvider::Claude:
            return readClaudeReply(value.object());
        case RemoteProvider::Gemini:
            return readGeminiReply(value.object());
        case RemoteProvider::OpenAi:
        case RemoteProvider::DeepSeek:
        case RemoteProvider::OpenRouter:
            return readOpenAiReply(value.object());
        }
    } catch (const DecodeError& error) {
        return NoAnswer{.reason = error.message()};
    }
    Q_UNREACHABLE();
}

} // namespace

VarnelError providerStatusError(const ProviderRequest& request, int status, const QByteArray& body)
{
    const bool isCut = body.size() >= providerErrorLimit;
    const QByteArrayView text = isCut ? withoutCutCharacter(body) : QByteArrayView(body);
    // An empty body says nothing, so the status speaks for it.
    const QString detail = text.isEmpty() || !isUtf8(text) ? QStringLiteral("HTTP %1").arg(status)
                                                           : withoutKey(QString::fromUtf8(text), request);
    return VarnelError::api(displayName(request.provider) + QStringLiteral(" request failed: ") + detail);
}

ProviderAnswer readProviderReply(const ProviderRequest& request, const QByteArray& body)
{
    const ReadReply reply = readReply(request.provider, body);
    if (const auto* const none = std::get_if<NoAnswer>(&reply))
        throw VarnelError::api(displayName(request.provider) +
                                   QStringLiteral(" returned an unexpected response"),
                               withoutKey(none->reason, request), none->isRefusal);
    return std::get<ProviderAnswer>(reply);
}

} // namespace varnel
