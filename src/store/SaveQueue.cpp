#include "store/SaveQueue.h"

#include <algorithm>

namespace varnel {

SaveQueue::SaveQueue(Report report)
    : m_report(std::move(report))
{}

SaveQueue::~SaveQueue()
{
    retryFailed(*m_state);
    stopOvertaken(*m_state);
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
        quint64 number = ++m_state->lastNumber;
        const auto older = std::find_if(m_state->waiting.begin(), m_state->waiting.end(), isFor(file));
        // Whoever waits for the older snapshot waits for this one now.
        if (older != m_state->waiting.end())
            number = older->number;
        // Dropping the older snapshot of the same file frees what only it held.
        std::erase_if(m_state->waiting, isFor(file));
        std::erase_if(m_state->failed, isFor(file));
        m_state->waiting.push_back({.file = file, .save = std::move(save), .number = number});
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

quint64 SaveQueue::lastNumber() const
{
    const std::scoped_lock lock(m_state->mutex);
    return m_state->lastNumber;
}

std::optional<SaveQueue::Entry> SaveQueue::takeNext(State& state, quint64 last)
{
    const std::scoped_lock lock(state.mutex);
    const bool isDone = std::none_of(state.waiting.begin(), state.waiting.end(),
                                     [last](const Entry& entry) { return entry.number <= last; });
    if (isDone)
        return std::nullopt;
    std::optional<Entry> next = std::move(state.waiting.front());
    state.waiting.erase(state.waiting.begin());
    state.running = next->file;
    state.stopRunning = std::stop_source();
    return next;
}

void SaveQueue::drain(State& state, quint64 last)
{
    const std::scoped_lock saving(state.saving);
    while (std::optional<Entry> next = takeNext(state, last))
        saveOne(state, std::move(*next));
}

void SaveQueue::stopOvertaken(State& state)
{
    const std::scoped_lock lock(state.mutex);
    if (state.running && std::any_of(state.waiting.begin(), state.waiting.end(), isFor(*state.running)))
        state.stopRunning.request_stop();
}

void SaveQueue::saveOne(State& state, Entry entry)
{
    SaveStatus status{.file = entry.file, .failure = std::nullopt, .setAside = std::nullopt};
    bool isOvertaken = false;
    try {
        status.setAside = entry.save(state.stopRunning.get_token());
    } catch (const Cancelled&) {
        isOvertaken = true;
    } catch (const Error& error) {
        status.failure = error.message();
    } catch (const std::exception& error) {
        status.failure = QStringLiteral("Saving failed: %1").arg(QString::fromLocal8Bit(error.what()));
    }
    const std::scoped_lock lock(state.mutex);
    state.running.reset();
    if (isOvertaken) {
        // Whoever waits for it waits for the one that overtook it.
        for (Entry& newer : state.waiting) {
            if (newer.file == entry.file)
                newer.number = std::min(newer.number, entry.number);
        }
        return;
    }
    if (!status.failure) {
        state.failures.erase(entry.file);
    } else {
        state.failures[entry.file] = *status.failure;
        if (std::none_of(state.waiting.begin(), state.waiting.end(), isFor(entry.file)))
            state.failed.push_back(std::move(entry));
    }
    state.ended.push_back(std::move(status));
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

Task<void> SaveQueue::waitUntilSaved(SaveQueue* queue, std::stop_token stop)
{
    co_await queue->runBehind([] { return true; }, std::move(stop));
    queue->deliver();
}

Task<void> SaveQueue::flushed(std::stop_token stop)
{
    return waitUntilSaved(this, std::move(stop));
}

void SaveQueue::flush()
{
    retryFailed(*m_state);
    stopOvertaken(*m_state);
    drain(*m_state);
    deliver();
}

std::optional<QString> SaveQueue::failure(SavedFile file) const
{
    const std::scoped_lock lock(m_state->mutex);
    const auto failure = m_state->failures.find(file);
    return failure == m_state->failures.end() ? std::nullopt : std::optional(failure->second);
}

} // namespace varnel
