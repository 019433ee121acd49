#pragma once

#include "base/Clock.h"
#include "store/Backups.h"
#include "store/Drafts.h"
#include "store/RecoveryFile.h"
#include "store/SaveQueue.h"
#include "store/SessionStore.h"

#include <QString>
#include <QUuid>

#include <memory>
#include <optional>
#include <vector>

namespace varnel {

/// What was found in a data folder at the start.
struct StoredConversations
{
    /// Sorted; never empty.
    SessionList sessions;
    Drafts drafts;
    /// One line for the user for each file that could not be read. It is renamed, not overwritten, by the
    /// first save.
    std::vector<QString> problems;
};

/// Keeps the conversations, the drafts, the running reply and the library's index of a data folder on the
/// disk, without making the window wait. It belongs to the thread of its owner.
class ConversationKeeper
{
public:
    /// How long the text of a running reply may be ahead of what is kept of it.
    static constexpr std::chrono::seconds replyPeriod{5};

    /// Reads nothing yet. @param clock outlives the keeper. @param report see SaveQueue.
    ConversationKeeper(const QString& dataFolder, const Clock& clock, SaveQueue::Report report);
    ConversationKeeper(const ConversationKeeper&) = delete;
    ConversationKeeper& operator=(const ConversationKeeper&) = delete;
    ConversationKeeper(ConversationKeeper&&) = delete;
    ConversationKeeper& operator=(ConversationKeeper&&) = delete;
    /// Saves what is not saved yet, blocking.
    ~ConversationKeeper();

    /// Reads the folder, blocking. A reply that an earlier run did not finish is put into its conversation.
    /// Where there are no conversations, or they cannot be read, `fresh` is the only one. What differs from
    /// the file is saved at once.
    StoredConversations load(const ChatSession& fresh);

    /// Takes the conversations as they are now. Returns at once.
    void saveSessions(SessionList sessions);
    void saveDrafts(Drafts drafts);
    /// Takes what saves the index of the library, see LibraryStore. Returns at once.
    void saveLibrary(SaveQueue::Save save);
    /// Takes a running reply as far as it has come; it is written at least every replyPeriod, and not more
    /// often. Returns at once.
    void keepReply(KeptReply reply);
    /// The message is in the conversations that are saved from now on; what was kept of it is removed along
    /// with that.
    void replyEnded(const QUuid& message);

    /// Ends when everything given before is on the disk or has failed; failure() says which. A stop ends the
    /// wait with Cancelled; the saving goes on.
    Task<void> flushed(std::stop_token stop = {});
    /// The same at once, blocking: for the end of the program.
    void flush();
    /// Why the latest save failed; nothing if it did not.
    std::optional<QString> failure(SavedFile file) const { return m_queue.failure(file); }

    /// Makes a backup of the saved conversations and the library, whose items are given. Throws Error, also
    /// when the conversations or the library cannot be saved before.
    Task<Backup> backUp(std::vector<LibraryItem> items);

private:
    /// Used by the queue's thread only once load() is done.
    struct Stores
    {
        explicit Stores(const QString& dataFolder)
            : sessions(dataFolder)
            , recovery(dataFolder)
            , drafts(dataFolder)
        {}
        SessionStore sessions;
        RecoveryFile recovery;
        DraftStore drafts;
    };

    /// What the files of the folder hold.
    struct Found
    {
        StoredConversations stored;
        std::vector<KeptReply> replies;
    };

    static Found find(Stores& stores);
    StoredConversations take(Found found, const ChatSession& fresh);
    static Task<void> pace(ConversationKeeper* keeper);
    static Task<Backup> makeBackupBehind(ConversationKeeper* keeper, std::vector<LibraryItem> items);
    void putReply();

    QString m_dataFolder;
    const Clock& m_clock;
    std::shared_ptr<Stores> m_stores;
    SaveQueue m_queue;
    Worker m_backups;
    /// The running reply, when it was not handed to the queue yet.
    std::optional<KeptReply> m_reply;
    /// Messages that are in the conversations and need not be kept apart.
    std::vector<QUuid> m_ended;
    Task<void> m_pacing;
};

} // namespace varnel
