#include "store/SessionList.h"

#include <tuple>

namespace varnel {

void SessionList::sort()
{
    struct Entry
    {
        std::shared_ptr<ChatSession> session;
        std::size_t place = 0;

        auto key() const
        {
            return std::tuple(!session->pinned, -session->updatedAt.time_since_epoch(), place);
        }
    };
    // The old place in the key keeps equals in their order.
    std::vector<Entry> entries;
    entries.reserve(m_sessions.size());
    for (std::shared_ptr<ChatSession>& session : m_sessions)
        entries.push_back({.session = std::move(session), .place = entries.size()});
    std::sort(entries.begin(), entries.end(),
              [](const Entry& a, const Entry& b) { return a.key() < b.key(); });
    std::transform(entries.begin(), entries.end(), m_sessions.begin(),
                   [](Entry& entry) { return std::move(entry.session); });
}

} // namespace varnel
