#include "providers/chat/ProviderTurn.h"

#include <algorithm>

namespace varnel {

std::vector<ProviderMessage> providerMessages(const std::vector<ChatMessage>& history,
                                              std::vector<PromptMedia> media)
{
    std::vector<ProviderMessage> messages;
    messages.reserve(history.size());
    for (const ChatMessage& message : history)
        messages.push_back({.role = message.role, .text = message.content, .media = {}});
    const auto last = std::find_if(messages.rbegin(), messages.rend(), [](const ProviderMessage& message) {
        return message.role == ChatRole::User;
    });
    if (last != messages.rend())
        last->media = std::move(media);
    return messages;
}

QString systemTextOf(const ProviderTurn& turn)
{
    QStringList texts;
    const auto add = [&texts](const QString& text) {
        if (const QString trimmed = text.trimmed(); !trimmed.isEmpty())
            texts.append(trimmed);
    };
    add(turn.systemPrompt);
    for (const ProviderMessage& message : turn.messages) {
        if (message.role == ChatRole::System)
            add(message.text);
    }
    return texts.join(u'\n');
}

} // namespace varnel
