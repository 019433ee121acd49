#pragma once

#include "base/Error.h"
#include "base/StopWakeup.h"
#include "base/Task.h"

#include <QFutureWatcher>
#include <QPromise>
#include <QThreadPool>

#include <memory>
#include <stop_token>
#include <type_traits>

namespace varnel {

/// Runs blocking work (big files, a keyring that may prompt, a look-up) on a thread of its pool, values in
/// and values out, and hands the result back on the event loop, never before run() has returned. Work that
/// blocks for long is asked to end through its stop token; its caller does not wait for it to obey: Cancelled
/// is thrown at once.
class Worker
{
public:
    /// @param threads how many pieces of work may run at the same time.
    explicit Worker(int threads = 1)
        : m_pool(std::make_unique<QThreadPool>())
    {
        m_pool->setMaxThreadCount(threads);
    }
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;
    Worker(Worker&&) = delete;
    Worker& operator=(Worker&&) = delete;
    /// Gives running work a moment to end; work that hangs is left behind rather than waited for. Who waits
    /// for work that never started gets Cancelled.
    ~Worker()
    {
        m_pool->clear();
        if (!m_pool->waitForDone(50))
            static_cast<void>(m_pool.release());
    }

    /// @param work called with a stop token on another thread; what it returns or throws is the task's
    /// result.
    template <typename Work>
    Task<std::invoke_result_t<Work, std::stop_token>> run(Work work, std::stop_token stop = {})
    {
        return start<std::invoke_result_t<Work, std::stop_token>>(m_pool.get(), std::move(work),
                                                                  std::move(stop));
    }

private:
    template <typename Result, typename Work>
    static Task<Result> start(QThreadPool* pool, Work work, std::stop_token stop)
    {
        // Without a stop token of its own the work still learns when its owner is destroyed.
        std::stop_source abandoned;
        const std::stop_callback forward(stop, [&abandoned] { abandoned.request_stop(); });
        struct AbandonOnExit
        {
            std::stop_source& source;
            ~AbandonOnExit() { source.request_stop(); }
        } const abandonOnExit{abandoned};

        auto promise = std::make_shared<QPromise<Outcome<Result>>>();
        QFutureWatcher<Outcome<Result>> watcher;
        Wakeup wakeup;
        const StopWakeup onStop(stop, wakeup);
        QObject::connect(&watcher, &QFutureWatcherBase::finished, &watcher, [&wakeup] { wakeup.notify(); });
        promise->start();
        watcher.setFuture(promise->future());
        // Only the work holds the promise: work that its pool drops unstarted then ends as a cancelled one.
        pool->start(
            [promise = std::move(promise), work = std::move(work), token = abandoned.get_token()]() mutable {
                promise->addResult(Outcome<Result>::of(work, token));
                promise->finish();
            });
        // Work may have ended by now: its result waits for the event loop all the same, or what follows it
        // would at times happen inside the call that started it.
        do {
            if (stop.stop_requested())
                throw Cancelled();
            co_await wakeup.wait();
        } while (!watcher.isFinished());
        // A stop counts as long as nobody has the result: the user was told that it had an effect.
        if (watcher.isCanceled() || stop.stop_requested())
            throw Cancelled();
        co_return watcher.result().take();
    }

    /// A result or the exception thrown in its place, in one copyable value.
    template <typename Result>
    struct Outcome
    {
        std::shared_ptr<Result> value;
        std::exception_ptr exception;

        template <typename Work>
        static Outcome of(Work& work, const std::stop_token& stop)
        {
            try {
                return {std::make_shared<Result>(work(stop)), nullptr};
            } catch (...) {
                return {nullptr, std::current_exception()};
            }
        }
        Result take() const
        {
            if (exception)
                std::rethrow_exception(exception);
            return std::move(*value);
        }
    };

    std::unique_ptr<QThreadPool> m_pool;
};

} // namespace varnel
