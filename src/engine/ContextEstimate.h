#pragma once

#include "store/ChatSession.h"

#include <QStringView>

namespace varnel {

/// About how many tokens a text is. No tokenizer is asked, since every model has its own: alphabets are taken
/// as four letters to the token, scripts without spaces as one character to the token.
qint64 estimatedTokens(QStringView text);

/// How much of its context a conversation takes.
struct ContextUse
{
    qint64 tokens = 0; ///< estimated
    qint64 limit = 0;  ///< the context length of the conversation

    bool operator==(const ContextUse&) const = default;

    /// From 0 upwards; more than 1 when the server is going to drop the beginning.
    double share() const { return limit > 0 ? static_cast<double>(tokens) / static_cast<double>(limit) : 0; }
};

/// Of what is in the conversation already, with the instructions that are sent along.
ContextUse contextUseOf(const ChatSession& session);

} // namespace varnel
