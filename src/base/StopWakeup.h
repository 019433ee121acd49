#pragma once

#include "base/Wakeup.h"

#include <functional>
#include <memory>
#include <stop_token>

namespace varnel {

/// Runs a function on this thread's event loop once a stop is requested, from whatever thread that happens.
/// Destroying it first means the function never runs.
class StopHandler
{
public:
    StopHandler(const std::stop_token& stop, std::function<void()> handler)
        : m_context(std::make_unique<Context>(std::move(handler)))
        , m_callback(stop, [context = m_context.get()] {
            QCoreApplication::postEvent(context, new QEvent(QEvent::User), Qt::HighEventPriority);
        })
    {}

private:
    class Context : public QObject
    {
    public:
        explicit Context(std::function<void()> handler)
            : m_handler(std::move(handler))
        {}

    protected:
        void customEvent(QEvent*) override
        {
            const auto handler = m_handler; // the handler may destroy this object
            handler();
        }

    private:
        std::function<void()> m_handler;
    };

    std::unique_ptr<Context> m_context;
    // Declared last, so that it is gone before the context it posts to.
    std::stop_callback<std::function<void()>> m_callback;
};

/// Wakes a waiting coroutine when a stop is requested.
class StopWakeup
{
public:
    StopWakeup(const std::stop_token& stop, Wakeup& wakeup)
        : m_handler(stop, [&wakeup] { wakeup.notify(); })
    {}

private:
    StopHandler m_handler;
};

} // namespace varnel
