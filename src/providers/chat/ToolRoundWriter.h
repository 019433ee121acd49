#pragma once

#include "base/JsonWriter.h"
#include "providers/chat/ProviderTurn.h"

namespace varnel {

/// Writes the messages of one round: the assistant message with the calls that were executed, and a message
/// per result. A round without results leaves no trace.
/// @param number which round of the turn it is, for the ids of calls that came without one.
void writeToolRound(JsonWriter& writer, const ToolRound& round, std::size_t number);

} // namespace varnel
