#include "store/SaveQueue.h"

#include <algorithm>

namespace varnel {

SaveQueue::SaveQueue(Report report)
    : m_report(std::move(report))
{}

SaveQueue::~SaveQueue()
{
    retryFailed(*m_state);
    drain(*m_state);
}

static auto isFor(SavedFile file)
{
    return [file](const auto& entry) { return entry.file == file; };
}

void SaveQueue::put(SavedFile file, Save save)
{
    {
        const std::scoped_lock lock(m_state->mutex);
        // Dropping the older snapshot of the same file frees what only it held.
        std::erase_if(m_state->waiting, isFor(file));
        std::erase_if(m_state->failed, isFor(file));
        m_state->waiting.push_back({.file = file, .save = std::move(save), .failure = {}});
    }
    retryFailed(*m_state);
    if (!m_isFollowing) {
        m_isFollowing = true;
        m_following = follow(this);
    }
}

void SaveQueue::retryFailed(State& state)
{
    const std::scoped_lock lock(state.mutex);
    state.waiting.insert(state.waiting.begin(), std::make_move_iterator(state.failed.begin()),
                         std::make_move_iterator(state.failed.end()));
    state.failed.clear();
}

void SaveQueue::drain(State& state)
{
    const std::scoped_lock saving(state.saving);
    for (;;) {
        Entry next{};
        {
            const std::scoped_lock lock(state.mutex);
            if (state.waiting.empty())
                return;
            next = std::move(state.waiting.front());
            state.waiting.erase(state.waiting.begin());
        }
        const SaveStatus status = saveOne(state, std::move(next));
        const std::scoped_lock lock(state.mutex);
        state.ended.push_back(status);
    }
}

SaveStatus SaveQueue::saveOne(State& state, Entry entry)
{
    SaveStatus status{.file = entry.file, .failure = std::nullopt, .setAside = std::nullopt};
    try {
        status.setAside = entry.save();
    } catch (const Error& error) {
        status.failure = error.message();
    } catch (const std::exception& error) {
        status.failure = QStringLiteral("Saving failed: %1").arg(QString::fromLocal8Bit(error.what()));
    }
    if (status.failure) {
        const std::scoped_lock lock(state.mutex);
        entry.failure = *status.failure;
        if (std::none_of(state.waiting.begin(), state.waiting.end(), isFor(entry.file)))
            state.failed.push_back(std::move(entry));
    }
    return status;
}

Task<void> SaveQueue::follow(SaveQueue* queue)
{
    for (bool isMore = true; isMore;) {
        co_await queue->runBehind([] { return true; });
        queue->deliver();
        const std::scoped_lock lock(queue->m_state->mutex);
        isMore = !queue->m_state->waiting.empty();
    }
    queue->m_isFollowing = false;
}

void SaveQueue::deliver()
{
    std::vector<SaveStatus> ended;
    {
        const std::scoped_lock lock(m_state->mutex);
        ended.swap(m_state->ended);
    }
    for (const SaveStatus& status : ended)
        m_report(status);
}

Task<void> SaveQueue::waitUntilSaved(SaveQueue* queue)
{
    co_await queue->runBehind([] { return true; });
    queue->deliver();
}

Task<void> SaveQueue::flushed()
{
    return waitUntilSaved(this);
}

void SaveQueue::flush()
{
    retryFailed(*m_state);
    drain(*m_state);
    deliver();
}

std::optional<QString> SaveQueue::failure(SavedFile file) const
{
    const std::scoped_lock lock(m_state->mutex);
    const auto failed = std::find_if(m_state->failed.begin(), m_state->failed.end(), isFor(file));
    return failed == m_state->failed.end() ? std::nullopt : std::optional(failed->failure);
}

} // namespace varnel
