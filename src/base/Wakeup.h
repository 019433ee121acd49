#pragma once

#include <QCoreApplication>
#include <QEvent>
#include <QObject>

#include <coroutine>
#include <utility>

namespace varnel {

/// Suspends one coroutine until somebody calls notify(), and resumes it from the event loop.
///
/// The usual shape is a loop that looks again after every wake-up, because a wake-up is a hint and no
/// promise: `while (!something()) co_await wakeup.wait();`. notify() may be called from anywhere on the same
/// thread, also from inside a callback of a library that must not be re-entered; the coroutine resumes later,
/// on its own. Whoever waits keeps the wake-up alive while it does.
class Wakeup
{
public:
    Wakeup() = default;
    Wakeup(const Wakeup&) = delete;
    Wakeup& operator=(const Wakeup&) = delete;
    Wakeup(Wakeup&&) = delete;
    Wakeup& operator=(Wakeup&&) = delete;
    ~Wakeup() = default;

    void notify()
    {
        if (m_context.waiting && !m_context.posted) {
            m_context.posted = true;
            QCoreApplication::postEvent(&m_context, new QEvent(QEvent::User), Qt::HighEventPriority);
        }
    }

    class [[nodiscard]] Awaiter
    {
    public:
        explicit Awaiter(Wakeup& wakeup) noexcept
            : m_wakeup(wakeup)
        {}
        Awaiter(const Awaiter&) = delete;
        Awaiter& operator=(const Awaiter&) = delete;
        Awaiter(Awaiter&&) = delete;
        Awaiter& operator=(Awaiter&&) = delete;
        // Also runs when the waiting frame is destroyed: a wake-up that is still under way finds nobody.
        ~Awaiter() { m_wakeup.m_context.waiting = nullptr; }

        bool await_ready() const noexcept { return false; }
        void await_suspend(std::coroutine_handle<> waiting)
        {
            m_wakeup.m_context.waiting = waiting;
            if (std::exchange(m_wakeup.m_context.resumesAtOnce, false))
                m_wakeup.notify();
        }
        void await_resume() const noexcept {}

    private:
        Wakeup& m_wakeup;
    };
    Awaiter wait() noexcept { return Awaiter(*this); }

    /// Waits for nothing but its turn: whatever else the event loop has to do now is done first.
    Awaiter turn() noexcept
    {
        m_context.resumesAtOnce = true;
        return Awaiter(*this);
    }

private:
    class Context : public QObject
    {
    public:
        std::coroutine_handle<> waiting;
        bool posted = false;
        bool resumesAtOnce = false;

    protected:
        void customEvent(QEvent*) override
        {
            posted = false;
            if (waiting)
                std::exchange(waiting, nullptr).resume();
        }
    };
    Context m_context;
};

} // namespace varnel
