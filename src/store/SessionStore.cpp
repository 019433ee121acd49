#include "store/SessionStore.h"

#include "store/StoredValues.h"

namespace varnel {

SessionList SessionStore::load()
{
    SessionList sessions(m_file.loadList(decodeChatSession).value_or(std::vector<ChatSession>()));
    sessions.sort();
    return sessions;
}

std::optional<SetAside> SessionStore::save(const SessionList& sessions, const std::stop_token& stop)
{
    return m_file.save([&sessions](JsonWriter& writer) { writeList(writer, sessions, writeChatSession); },
                       stop);
}

} // namespace varnel
