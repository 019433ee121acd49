#pragma once

#include "ollama/OllamaTypes.h"

#include <QString>

#include <chrono>
#include <optional>

namespace varnel {

/// The text of a running turn and when it is due to be shown.
///
/// Thinking that comes after the reply has begun is dropped, so that what is shown as thinking is always the
/// reasoning before the answer. The first piece is due at once, later ones at most every 0.4 seconds, so that
/// a fast model does not keep the transcript busy.
class TurnBuffers
{
public:
    static constexpr std::chrono::milliseconds pace{400};

    /// Takes a piece; whether the message is due to be rewritten now.
    bool take(const ChatDelta& delta, std::chrono::steady_clock::time_point now);

    bool isEmpty() const { return m_thinking.isEmpty() && m_reply.isEmpty(); }
    const QString& thinking() const { return m_thinking; }
    const QString& reply() const { return m_reply; }

private:
    QString m_thinking;
    QString m_reply;
    std::optional<std::chrono::steady_clock::time_point> m_lastRewrite;
};

} // namespace varnel
