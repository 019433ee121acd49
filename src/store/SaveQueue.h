#pragma once

#include "base/Task.h"
#include "base/Worker.h"
#include "store/DataFile.h"

#include <QString>

#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <vector>

namespace varnel {

/// The files that are saved behind the user's back.
enum class SavedFile { Conversations, Recovery, Drafts, Library };

/// How one save ended.
struct SaveStatus
{
    SavedFile file = SavedFile::Conversations;
    /// Why it failed, in one line for the user; nothing when the file is on the disk.
    std::optional<QString> failure;
    /// What had to be kept beside the file.
    std::optional<SetAside> setAside;
};

/// Saves files on a thread of its own, one after the other. Of several saves of the same file that wait, only
/// the latest is done. A save that failed is tried again along with the next one, whatever that is for.
class SaveQueue
{
public:
    /// Writes a snapshot that it owns; runs on the queue's thread and throws Error. It may end with Cancelled
    /// when it is stopped, which happens only when a later snapshot of the same file waits.
    using Save = std::function<std::optional<SetAside>(const std::stop_token&)>;
    using Report = std::function<void(const SaveStatus&)>;

    /// @param report told on the caller's thread, from the event loop or from flush(), how each save ended.
    explicit SaveQueue(Report report);
    SaveQueue(const SaveQueue&) = delete;
    SaveQueue& operator=(const SaveQueue&) = delete;
    SaveQueue(SaveQueue&&) = delete;
    SaveQueue& operator=(SaveQueue&&) = delete;
    /// Does what still waits; nobody is told any more.
    ~SaveQueue();

    /// Takes the latest state of a file. Returns at once.
    void put(SavedFile file, Save save);

    /// Ends when everything that was put before is on the disk or has failed, and was reported. A stop ends
    /// the wait with Cancelled; the saving goes on.
    Task<void> flushed(std::stop_token stop = {});
    /// The same at once, blocking: for the end of the program. What had failed is tried once more, and a
    /// running save that a later one has overtaken is given up.
    void flush();
    /// Why the latest save of a file failed; nothing if it did not, or is yet to begin.
    std::optional<QString> failure(SavedFile file) const;

    /// Runs work on the queue's thread when everything that was put before is saved.
    template <typename Work>
    Task<std::invoke_result_t<Work>> runBehind(Work work, std::stop_token stop = {})
    {
        // What is put from now on is not waited for: somebody may go on changing things for long.
        return m_worker.run(
            [state = m_state, last = lastNumber(), work = std::move(work)](const std::stop_token&) mutable {
                drain(*state, last);
                return work();
            },
            std::move(stop));
    }

private:
    struct Entry
    {
        SavedFile file;
        Save save;
        /// Counted up from put to put; a snapshot in place of an older one that still waited has that one's.
        quint64 number = 0;
    };
    /// Shared with the thread, which may outlive the queue when the disk hangs.
    struct State
    {
        std::mutex mutex;
        quint64 lastNumber = 0;
        std::vector<Entry> waiting;
        std::vector<Entry> failed;
        /// Why the latest save of a file failed, until one succeeds.
        std::map<SavedFile, QString> failures;
        std::vector<SaveStatus> ended;
        /// What is being saved, and how to stop it.
        std::optional<SavedFile> running;
        std::stop_source stopRunning;
        /// Held by whoever saves.
        std::mutex saving;
    };

    quint64 lastNumber() const;
    /// Saves until nothing waits whose number is `last` or less.
    static void drain(State& state, quint64 last = std::numeric_limits<quint64>::max());
    static void retryFailed(State& state);
    static std::optional<Entry> takeNext(State& state, quint64 last);
    static void stopOvertaken(State& state);
    static void saveOne(State& state, Entry entry);
    static Task<void> follow(SaveQueue* queue);
    static Task<void> waitUntilSaved(SaveQueue* queue, std::stop_token stop);
    void deliver();

    Report m_report;
    std::shared_ptr<State> m_state = std::make_shared<State>();
    bool m_isFollowing = false;
    Worker m_worker;
    Task<void> m_following;
};

} // namespace varnel
