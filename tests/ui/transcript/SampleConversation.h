#pragma once

#include "ui/transcript/TranscriptModel.h"

#include <vector>

namespace varnel::test {

/// A conversation that holds one of everything a reply can.
std::vector<TranscriptMessage> sampleConversation();
/// `count` messages, prompts and replies in turn, of about `length` characters each.
std::vector<TranscriptMessage> longConversation(int count, int length);
TranscriptMessage prompt(const QString& id, const QString& text);
TranscriptMessage reply(const QString& id, const QString& text);

} // namespace varnel::test
