#include "engine/TurnBuffers.h"

namespace varnel {

bool TurnBuffers::take(const ChatDelta& delta, std::chrono::steady_clock::time_point now)
{
    if (delta.kind == ChatDelta::Kind::Reply)
        m_reply += delta.text;
    else if (m_reply.isEmpty())
        m_thinking += delta.text;
    else
        return false;
    if (m_lastRewrite && now - *m_lastRewrite <= pace)
        return false;
    m_lastRewrite = now;
    return true;
}

} // namespace varnel
