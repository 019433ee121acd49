#include "providers/chat/RequestBuilder.h"

#include "providers/VarnelError.h"
#include "providers/chat/RequestBodies.h"
#include "providers/credentials/KeyLookup.h"
#include "store/HttpUrl.h"

namespace varnel {

namespace {

QByteArray keyOf(const ProviderTurn& turn)
{
    const QString key = turn.key.trimmed();
    if (key.isEmpty())
        throw VarnelError::missingKey(displayName(turn.provider));
    if (!isSendableKey(key))
        throw VarnelError::api(
            QStringLiteral("The %1 API key holds a line break or a NUL character and cannot be sent.")
                .arg(displayName(turn.provider)));
    return key.toUtf8();
}

/// The path behind the base. A model's name is free text, so nothing in it may act as a part of a URL.
QString endpointOf(const ProviderTurn& turn)
{
    switch (turn.provider) {
    case RemoteProvider::Gemini:
        return QStringLiteral("v1beta/models/") + QString::fromLatin1(QUrl::toPercentEncoding(turn.model)) +
               QStringLiteral(":generateContent");
    case RemoteProvider::Claude:
        return QStringLiteral("v1/messages");
    case RemoteProvider::OpenAi:
    case RemoteProvider::DeepSeek:
    case RemoteProvider::OpenRouter:
        break;
    }
    return usesResponsesEndpoint(turn) ? QStringLiteral("responses") : QStringLiteral("chat/completions");
}

QMap<QByteArray, QByteArray> headersOf(const ProviderTurn& turn)
{
    const QByteArray key = keyOf(turn);
    QMap<QByteArray, QByteArray> headers{{"Content-Type", "application/json"}};
    switch (turn.provider) {
    case RemoteProvider::Gemini:
        headers.insert("x-goog-api-key", key);
        break;
    case RemoteProvider::Claude:
        headers.insert("x-api-key", key);
        headers.insert("anthropic-version", "2023-06-01");
        break;
    case RemoteProvider::OpenRouter:
        headers.insert("HTTP-Referer", "https://varnel.app");
        headers.insert("X-Title", "Varnel");
        [[fallthrough]];
    case RemoteProvider::OpenAi:
    case RemoteProvider::DeepSeek:
        headers.insert("Authorization", "Bearer " + key);
        break;
    }
    return headers;
}

} // namespace

ProviderRequest buildProviderRequest(const ProviderTurn& turn, const ApiBases& bases)
{
    return {
        .provider = turn.provider,
        .model = turn.model,
        .url = endpointUrl(bases.url(apiBaseOf(turn.provider)), endpointOf(turn)),
        .headers = headersOf(turn),
        .body = providerBody(turn),
    };
}

} // namespace varnel
