#include "store/SessionStore.h"

namespace varnel {

SessionList SessionStore::load()
{
    SessionList sessions(m_file.loadList(decodeChatSession).value_or(std::vector<ChatSession>()));
    sessions.sort();
    return sessions;
}

std::optional<SetAside> SessionStore::save(const SessionList& sessions)
{
    return m_file.save([&sessions](JsonWriter& writer) {
        writer.beginArray();
        for (const ChatSession& session : sessions)
            writeChatSession(writer, session);
        writer.endArray();
    });
}

} // namespace varnel
