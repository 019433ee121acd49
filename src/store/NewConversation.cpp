#include "store/NewConversation.h"

namespace varnel {

ChatSession newConversation(const Preferences& preferences, Instant now, const std::optional<QString>& model)
{
    const RemoteProvider provider = preferences.remoteProvider();
    return {
        .id = QUuid::createUuid(),
        .title = QStringLiteral("New conversation"),
        .model = model ? *model : preferences.defaultModel(),
        .systemPrompt = {},
        .projectPath = {},
        .messages = {},
        .temperature = preferences.temperature(),
        .contextLength = preferences.contextLength(),
        .keepAlive = preferences.keepAlive(),
        .remoteProvider = provider,
        .remoteModel = suggestedModels(provider).front(),
        .createdAt = now,
        .updatedAt = now,
    };
}

} // namespace varnel
