#include "engine/ContextEstimate.h"

#include "store/ProjectFiles.h"

namespace varnel {

namespace {

// What the chat template of a model puts around every message.
constexpr qint64 tokensPerMessage = 4;

} // namespace

qint64 estimatedTokens(QStringView text)
{
    // Kana, CJK ideographs and Hangul begin here; surrogates (rare ideographs, emoji) count as a half each.
    constexpr char16_t firstDense = 0x2E80;
    qint64 quarters = 0;
    for (const QChar character : text) {
        if (character.isSurrogate())
            quarters += 2;
        else
            quarters += character.unicode() >= firstDense ? 4 : 1;
    }
    return (quarters + 3) / 4;
}

ContextUse contextUseOf(const ChatSession& session)
{
    qint64 tokens = estimatedTokens(session.systemPrompt) + estimatedTokens(projectInstruction(session));
    for (const ChatMessage& message : session.messages) {
        if (!message.content.isEmpty())
            tokens += estimatedTokens(message.content) + tokensPerMessage;
    }
    return {tokens, session.contextLength};
}

} // namespace varnel
