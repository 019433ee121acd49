#pragma once

#include "base/Clock.h"
#include "store/ChatSession.h"
#include "store/Preferences.h"

#include <QString>

#include <optional>

namespace varnel {

/// A conversation without messages, held with what the preferences say at this moment.
/// @param model the Ollama model; without one the preferred one for new conversations.
ChatSession newConversation(const Preferences& preferences, Instant now,
                            const std::optional<QString>& model = std::nullopt);

} // namespace varnel
