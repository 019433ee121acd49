#include "store/ConversationKeeper.h"

#include "store/LibraryPath.h"

#include <algorithm>

namespace varnel {

namespace {

/// What `load` reads; a failure is put among the problems.
template <typename Load>
auto loadOrReport(std::vector<QString>& problems, Load load) -> decltype(load())
{
    try {
        return load();
    } catch (const Error& error) {
        problems.push_back(error.message());
        return {};
    }
}

} // namespace

ConversationKeeper::ConversationKeeper(const QString& dataFolder, const Clock& clock,
                                       SaveQueue::Report report)
    : m_dataFolder(dataFolder)
    , m_clock(clock)
    , m_stores(std::make_shared<Stores>(dataFolder))
    , m_queue(std::move(report))
{}

ConversationKeeper::~ConversationKeeper()
{
    putReply();
}

ConversationKeeper::Found ConversationKeeper::find(Stores& stores)
{
    Found found;
    std::vector<QString>& problems = found.stored.problems;
    found.stored.sessions = loadOrReport(problems, [&stores] { return stores.sessions.load(); });
    found.stored.drafts = loadOrReport(problems, [&stores] { return stores.drafts.load(); });
    found.replies = loadOrReport(problems, [&stores] { return stores.recovery.load(); });
    setHomelessAside(stores, found);
    return found;
}

/// Replies that belong to conversations which are not there, or cannot be read, stay in the file; it gets
/// another name and what has a place is kept anew.
void ConversationKeeper::setHomelessAside(Stores& stores, Found& found)
{
    const SessionList& sessions = found.stored.sessions;
    const auto isHomeless = [&sessions](const KeptReply& reply) { return hasNoPlace(sessions, reply); };
    if (std::ranges::none_of(found.replies, isHomeless))
        return;
    try {
        const QString path = stores.recovery.setAside();
        found.stored.problems.push_back(
            QStringLiteral("Text that was kept belongs to a conversation that is not there. It is in %1.")
                .arg(path));
    } catch (const Error& error) {
        // It is still where it was, and the next start tries again.
        found.stored.problems.push_back(error.message());
        std::erase_if(found.replies, isHomeless);
        return;
    }
    std::erase_if(found.replies, isHomeless);
    for (const KeptReply& reply : found.replies)
        loadOrReport(found.stored.problems, [&stores, &reply] { return stores.recovery.keep(reply); });
}

StoredConversations ConversationKeeper::take(Found found, const ChatSession& fresh)
{
    StoredConversations& stored = found.stored;
    const bool isFresh = stored.sessions.empty();
    if (isFresh)
        stored.sessions.append(fresh);
    if (!found.replies.empty()) {
        stored.sessions = withKeptReplies(std::move(stored.sessions), found.replies);
        stored.sessions.sort();
        for (const KeptReply& reply : found.replies)
            m_ended.push_back(reply.message.id);
    }
    if (isFresh || !found.replies.empty())
        saveSessions(stored.sessions);
    return std::move(stored);
}

StoredConversations ConversationKeeper::load(const ChatSession& fresh)
{
    m_tidying = removeLeftovers(&m_worker, &m_clock, m_dataFolder);
    return take(find(*m_stores), fresh);
}

/// An import that the end of the program interrupted leaves a part of a file that no index knows of.
Task<void> ConversationKeeper::removeLeftovers(Worker* worker, const Clock* clock, QString dataFolder)
{
    co_await clock->sleepFor(tidyingPause, {});
    co_await worker->run([dataFolder](const std::stop_token& stop) {
        removeUnfinishedCopies(dataFolder, stop);
        return true;
    });
}

void ConversationKeeper::saveSessions(SessionList sessions)
{
    m_queue.put(SavedFile::Conversations, [stores = m_stores, sessions = std::move(sessions),
                                           ended = m_ended](const std::stop_token& stop) {
        std::optional<SetAside> kept = stores->sessions.save(sessions, stop);
        try {
            std::optional<SetAside> beside = stores->recovery.forget(ended);
            if (!kept)
                kept = std::move(beside);
        } catch (const Error&) {
            // It does no harm that it is still there, and the next save tries again.
        }
        return kept;
    });
}

void ConversationKeeper::saveDrafts(Drafts drafts)
{
    m_queue.put(SavedFile::Drafts, [stores = m_stores, drafts = std::move(drafts)](const std::stop_token&) {
        return stores->drafts.save(drafts);
    });
}

void ConversationKeeper::saveLibrary(SaveQueue::Save save)
{
    m_queue.put(SavedFile::Library, std::move(save));
}

void ConversationKeeper::keepReply(KeptReply reply)
{
    m_reply = std::move(reply);
    if (!m_pacing.isRunning())
        m_pacing = pace(this);
}

Task<void> ConversationKeeper::pace(ConversationKeeper* keeper)
{
    while (keeper->m_reply) {
        keeper->putReply();
        co_await keeper->m_clock.sleepFor(replyPeriod, {});
    }
}

void ConversationKeeper::putReply()
{
    if (!m_reply)
        return;
    m_queue.put(SavedFile::Recovery, [stores = m_stores, reply = std::move(*m_reply)](
                                         const std::stop_token&) { return stores->recovery.keep(reply); });
    m_reply.reset();
}

void ConversationKeeper::replyEnded(const QUuid& message)
{
    if (m_reply && m_reply->message.id == message)
        m_reply.reset();
    m_ended.push_back(message);
}

Task<void> ConversationKeeper::flushed(std::stop_token stop)
{
    putReply();
    return m_queue.flushed(std::move(stop));
}

void ConversationKeeper::flush()
{
    putReply();
    m_queue.flush();
}

Task<Backup> ConversationKeeper::backUp(std::vector<LibraryItem> items)
{
    return makeBackupBehind(this, std::move(items));
}

Task<Backup> ConversationKeeper::makeBackupBehind(ConversationKeeper* keeper, std::vector<LibraryItem> items)
{
    co_await keeper->m_queue.flushed();
    if (const std::optional<QString> failure = keeper->failure(SavedFile::Conversations))
        throw Error(QStringLiteral("No backup was made, because the conversations could not be saved. ") +
                    *failure);
    if (const std::optional<QString> failure = keeper->failure(SavedFile::Library))
        throw Error(QStringLiteral("No backup was made, because the library could not be saved. ") +
                    *failure);
    // A large library takes its time, which the saves and whoever waits for them must not. Files are replaced
    // as a whole, so what is copied is one state of each.
    co_return co_await keeper->m_worker.run(
        [root = keeper->m_dataFolder, items = std::move(items),
         now = keeper->m_clock.now()](const std::stop_token&) { return makeBackup(root, items, now); });
}

} // namespace varnel
