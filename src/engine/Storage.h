#pragma once

#include "base/Task.h"
#include "store/Backups.h"
#include "store/Drafts.h"
#include "store/LibraryLocation.h"
#include "store/LibraryStore.h"
#include "store/RecoveryFile.h"
#include "store/SaveQueue.h"
#include "store/SessionStore.h"

#include <QString>
#include <QStringList>
#include <QUuid>

#include <functional>
#include <memory>
#include <vector>

namespace varnel {

/// The data folder as the model uses it: read once, then written behind its back, in order, and never with
/// anything lost that it has not seen.
class Storage
{
public:
    /// @param notify told on the event loop what the user has to know: a save that failed, or old contents
    /// that were set aside.
    Storage(LibraryLocation location, std::function<void(const QString&)> notify);

    /// What is stored, with what the recovery file adds.
    struct Contents
    {
        SessionList sessions; ///< sorted; empty when there are none or they cannot be read
        Drafts drafts;
        QStringList problems; ///< a line for the user each
        bool isChanged = false; ///< whether there is more than the file of the conversations holds
    };
    Contents load();

    const LibraryLocation& location() const { return m_location; }
    SessionStore& sessionStore() { return *m_sessionStore; }
    LibraryStore& library() { return m_library; }

    /// Saves the conversations. Replies that were kept for recovery are in them and are no longer kept.
    /// @param running a reply that is still being written, which stays kept.
    void save(const SessionList& sessions, const QUuid& running);
    void save(const Drafts& drafts);
    /// Keeps a reply as far as it has come until its conversation is saved.
    void keep(const KeptReply& reply);
    /// Ends when what was kept and saved so far is on the disk, or has failed.
    Task<void> kept() { return m_queue.flushed(); }
    /// Blocks until everything is saved, or has failed.
    void flush() { m_queue.flush(); }

    /// Copies everything into a new backup, when what was changed before is saved. Throws Error.
    Task<Backup> backUp(Instant now);
    /// Reads a backup by its name and copies stored files back that are gone. Throws Error.
    Task<BackupContents> readBackup(QString name);

    /// What the library had to say since it was asked last.
    QStringList takeLibraryNotices();

private:
    static Task<Backup> backUpBehind(SaveQueue* queue, QString root, std::vector<LibraryItem> items, Instant now);
    static Task<BackupContents> readBehind(SaveQueue* queue, QString root, QString name);

    LibraryLocation m_location;
    std::function<void(const QString&)> m_notify;
    // Shared with the thread that saves, which may outlive this when a disk hangs.
    std::shared_ptr<SessionStore> m_sessionStore;
    std::shared_ptr<RecoveryFile> m_recovery;
    std::shared_ptr<DraftStore> m_draftStore;
    LibraryStore m_library;
    bool m_libraryProblemTold = false;
    std::vector<QUuid> m_kept;
    SaveQueue m_queue;
};

} // namespace varnel
