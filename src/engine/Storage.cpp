#include "engine/Storage.h"

#include <algorithm>

namespace varnel {

Storage::Storage(LibraryLocation location, std::function<void(const QString&)> notify)
    : m_location(std::move(location))
    , m_notify(std::move(notify))
    , m_sessionStore(std::make_shared<SessionStore>(m_location.folder()))
    , m_recovery(std::make_shared<RecoveryFile>(m_location.folder()))
    , m_draftStore(std::make_shared<DraftStore>(m_location.folder()))
    , m_library(m_location.folder())
    , m_queue([this](const SaveStatus& status) {
        if (status.setAside)
            m_notify(status.setAside->text());
        if (status.failure)
            m_notify(*status.failure);
    })
{}

Storage::Contents Storage::load()
{
    Contents contents;
    const auto attempt = [&contents](const auto& read) {
        try {
            read();
        } catch (const Error& error) {
            contents.problems.push_back(error.message());
        }
    };
    attempt([&] { contents.sessions = m_sessionStore->load(); });
    attempt([&] {
        const std::vector<KeptReply> kept = m_recovery->load();
        for (const KeptReply& reply : kept)
            m_kept.push_back(reply.message.id);
        contents.isChanged = !kept.empty();
        contents.sessions = withKeptReplies(std::move(contents.sessions), kept);
    });
    attempt([&] { contents.drafts = m_draftStore->load(); });
    return contents;
}

void Storage::save(const SessionList& sessions, const QUuid& running)
{
    std::vector<QUuid> saved = m_kept;
    std::erase(saved, running);
    std::erase_if(m_kept, [&running](const QUuid& message) { return message != running; });
    m_queue.put(SavedFile::Conversations, [store = m_sessionStore, recovery = m_recovery, sessions, saved] {
        std::optional<SetAside> setAside = store->save(sessions);
        if (!saved.empty())
            recovery->forget(saved);
        return setAside;
    });
}

void Storage::save(const Drafts& drafts)
{
    m_queue.put(SavedFile::Drafts, [store = m_draftStore, drafts] { return store->save(drafts); });
}

void Storage::keep(const KeptReply& reply)
{
    if (std::find(m_kept.begin(), m_kept.end(), reply.message.id) == m_kept.end())
        m_kept.push_back(reply.message.id);
    m_queue.put(SavedFile::Recovery, [recovery = m_recovery, reply]() -> std::optional<SetAside> {
        recovery->keep(reply);
        return std::nullopt;
    });
}

Task<Backup> Storage::backUp(Instant now)
{
    // Not coroutines themselves: what they copy is taken before anything waits.
    return backUpBehind(&m_queue, m_location.folder(), m_library.items(), now);
}

Task<Backup> Storage::backUpBehind(SaveQueue* queue, QString root, std::vector<LibraryItem> items, Instant now)
{
    co_return co_await queue->runBehind([root, items, now] { return makeBackup(root, items, now); });
}

Task<BackupContents> Storage::readBackup(QString name)
{
    return readBehind(&m_queue, m_location.folder(), std::move(name));
}

Task<BackupContents> Storage::readBehind(SaveQueue* queue, QString root, QString name)
{
    co_return co_await queue->runBehind([root, name] {
        const std::vector<Backup> backups = listBackups(root);
        const auto found = std::find_if(backups.begin(), backups.end(),
                                        [&name](const Backup& backup) { return backup.name == name; });
        if (found == backups.end())
            throw Error(QStringLiteral("There is no backup %1.").arg(name));
        return restoreBackup(root, *found);
    });
}

QStringList Storage::takeLibraryNotices()
{
    QStringList notices;
    if (m_library.loadProblem() && !std::exchange(m_libraryProblemTold, true))
        notices.push_back(*m_library.loadProblem());
    for (const SetAside& setAside : m_library.takeSetAside())
        notices.push_back(setAside.text());
    return notices;
}

} // namespace varnel
