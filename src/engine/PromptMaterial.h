#pragma once

#include "store/ChatSession.h"
#include "store/LibraryItem.h"
#include "store/PromptMedia.h"
#include "websearch/SearchPlan.h"
#include "websearch/SearchService.h"

#include <QString>

#include <optional>
#include <vector>

namespace varnel {

/// A prompt that is about to be sent.
struct PromptQuestion
{
    /// As it is before the prompt joins it.
    ChatSession conversation;
    /// What the user typed, or the whole content of a prompt that is sent once more.
    QString prompt;
    /// What is attached to it.
    std::vector<LibraryItem> items;
    /// Whether the prompt already holds the texts of its attachments.
    bool isFollowUp = false;
};

/// What was found out about it, all that a turn needs besides the conversation.
struct PromptMaterial
{
    /// The content of the user's message.
    QString content;
    std::vector<PromptMedia> media;
    SearchPlan plan;
    std::optional<SearchService> search;
    QString providerKey;
};

} // namespace varnel
