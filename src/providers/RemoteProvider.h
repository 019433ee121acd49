#pragma once

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace varnel {

/// The cloud chat providers a conversation can be sent to, in the order of every list and picker.
enum class RemoteProvider {
    Gemini,
    OpenAi,
    Claude,
    DeepSeek,
    OpenRouter,
};

/// Every provider, in the fixed order.
const std::vector<RemoteProvider>& allRemoteProviders();

/// The text under which a provider is stored, for example "openrouter".
const QString& rawValue(RemoteProvider provider);
/// The provider stored under this very text; nothing for any other.
std::optional<RemoteProvider> remoteProviderFromRawValue(QStringView text);

/// The name that is shown.
const QString& displayName(RemoteProvider provider);
/// The models offered for the provider, best first; never empty. A conversation may name others.
const QStringList& suggestedModels(RemoteProvider provider);
/// The names under which the provider's key is looked up, as a saved secret and as an environment variable,
/// in the order of the look-up; never empty.
const QStringList& credentialNames(RemoteProvider provider);
/// Whether the provider can search the web itself.
bool hasOwnSearch(RemoteProvider provider);

} // namespace varnel
