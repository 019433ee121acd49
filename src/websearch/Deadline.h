#pragma once

#include <QTimer>

#include <chrono>
#include <stop_token>

namespace varnel {

/// Stops a piece of work when its time is up, or when whoever asked for it stops it. Lives in the frame of
/// the work and needs its event loop.
class Deadline
{
public:
    Deadline(const std::stop_token& outer, std::chrono::milliseconds limit)
        : m_outer(outer)
        , m_limit(limit)
        , m_forward(outer, Forward{&m_source})
    {
        m_timer.setSingleShot(true);
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { m_source.request_stop(); });
        m_timer.start(limit);
    }
    Deadline(const Deadline&) = delete;
    Deadline& operator=(const Deadline&) = delete;
    Deadline(Deadline&&) = delete;
    Deadline& operator=(Deadline&&) = delete;
    ~Deadline() = default;

    /// Stopped at the end of the time or from outside.
    std::stop_token token() const { return m_source.get_token(); }
    /// Whether it was the time that stopped the work.
    bool hasPassed() const { return m_source.stop_requested() && !m_outer.stop_requested(); }
    std::chrono::milliseconds limit() const { return m_limit; }

private:
    struct Forward
    {
        std::stop_source* source;
        void operator()() const { source->request_stop(); }
    };

    std::stop_source m_source;
    std::stop_token m_outer;
    std::chrono::milliseconds m_limit;
    QTimer m_timer;
    std::stop_callback<Forward> m_forward;
};

} // namespace varnel
