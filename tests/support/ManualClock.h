#pragma once

#include "base/Clock.h"
#include "base/Error.h"
#include "base/StopWakeup.h"
#include "base/Wakeup.h"

#include <set>

namespace varnel::test {

/// A clock that stands still until it is told to go on.
class ManualClock final : public Clock
{
public:
    explicit ManualClock(Instant start = *fromIso8601("2026-03-18T12:00:00Z"))
        : m_now(start)
    {}

    Instant now() const override { return m_now; }
    std::chrono::steady_clock::time_point steadyNow() const override { return m_steady; }
    Task<void> sleepFor(std::chrono::milliseconds duration, std::stop_token stop) const override
    {
        return sleep(this, m_steady + duration, std::move(stop));
    }

    /// Moves both times forward; who slept long enough wakes from the event loop.
    void advance(std::chrono::milliseconds duration)
    {
        m_now += duration;
        m_steady += duration;
        for (Wakeup* const sleeper : m_sleepers)
            sleeper->notify();
    }

private:
    static Task<void> sleep(const ManualClock* clock, std::chrono::steady_clock::time_point end,
                            std::stop_token stop)
    {
        Wakeup wakeup;
        const StopWakeup onStop(stop, wakeup);
        clock->m_sleepers.insert(&wakeup);
        struct Leave
        {
            const ManualClock* clock;
            Wakeup* wakeup;
            ~Leave() { clock->m_sleepers.erase(wakeup); }
        } const leave{clock, &wakeup};
        while (clock->steadyNow() < end) {
            if (stop.stop_requested())
                throw Cancelled();
            co_await wakeup.wait();
        }
    }

    Instant m_now;
    std::chrono::steady_clock::time_point m_steady;
    mutable std::set<Wakeup*> m_sleepers;
};

} // namespace varnel::test
