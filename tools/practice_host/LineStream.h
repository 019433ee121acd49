#pragma once

#include "practice_host/HttpExchange.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace varnel::practice {

/// What happens on the connection after the last line.
enum class StreamEnd {
    Whole,   ///< the body ends as it should
    Close,   ///< the connection is closed without the end of the body
    Reset,   ///< the connection is broken
    Silence, ///< nothing at all, until the client leaves
};

/// What a LineStream sends and when.
struct StreamPlan
{
    /// The next line, made when it is due; nothing after the last.
    std::function<std::optional<QByteArray>()> nextLine;
    /// The time between two lines; zero sends as fast as the client reads.
    std::chrono::nanoseconds pace{0};
    /// The time before anything is sent.
    std::chrono::milliseconds firstDelay{0};
    StreamEnd end = StreamEnd::Whole;
};

/// Sends lines as a chunked reply, each in a chunk of its own and in its own time, and deletes itself
/// afterwards or when the client leaves. A client that reads slowly slows it down; little is kept in memory
/// for it.
class LineStream final : public QObject
{
public:
    LineStream(std::shared_ptr<HttpExchange> exchange, StreamPlan plan, QObject* parent);

private:
    void pump();
    void finish();
    /// How many lines are to be sent by now.
    qint64 linesDue() const;

    std::shared_ptr<HttpExchange> m_exchange;
    StreamPlan m_plan;
    QTimer m_timer;
    QElapsedTimer m_sinceFirst;
    qint64 m_sent = 0;
};

} // namespace varnel::practice
