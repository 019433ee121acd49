#include "practice_host/LineStream.h"

#include <algorithm>
#include <limits>

namespace varnel::practice {

namespace {

constexpr qint64 unsentLimit = 256LL * 1024;

} // namespace

LineStream::LineStream(std::shared_ptr<HttpExchange> exchange, StreamPlan plan, QObject* parent)
    : QObject(parent)
    , m_exchange(std::move(exchange))
    , m_plan(std::move(plan))
{
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &LineStream::pump);
    m_exchange->onClosed([this] {
        m_timer.stop();
        deleteLater();
    });
    m_exchange->onBytesWritten([this] {
        if (m_sinceFirst.isValid() && !m_timer.isActive() && m_exchange->unsentBytes() < unsentLimit / 2)
            m_timer.start();
    });
    m_timer.start(m_plan.firstDelay);
}

void LineStream::pump()
{
    if (!m_sinceFirst.isValid()) {
        m_sinceFirst.start();
        m_exchange->beginReply(200, {{"Content-Type", "application/x-ndjson"}});
        const auto pace = std::chrono::duration_cast<std::chrono::milliseconds>(m_plan.pace);
        m_timer.setInterval(m_plan.pace.count() == 0 ? pace : std::max(pace, std::chrono::milliseconds(1)));
    }
    const qint64 due = linesDue();
    while (m_sent < due) {
        if (m_exchange->unsentBytes() > unsentLimit) {
            m_timer.stop();
            break;
        }
        const std::optional<QByteArray> line = m_plan.nextLine();
        if (!line) {
            finish();
            return;
        }
        m_exchange->sendChunk(*line);
        ++m_sent;
    }
    m_exchange->flush();
}

void LineStream::finish()
{
    m_timer.stop();
    switch (m_plan.end) {
    case StreamEnd::Whole:
        m_exchange->endReply();
        break;
    case StreamEnd::Close:
        m_exchange->close();
        break;
    case StreamEnd::Reset:
        m_exchange->abort();
        break;
    case StreamEnd::Silence:
        m_exchange->flush();
        m_exchange->onBytesWritten(nullptr);
        return;
    }
    deleteLater();
}

qint64 LineStream::linesDue() const
{
    if (m_plan.pace.count() == 0)
        return std::numeric_limits<qint64>::max();
    return 1 + m_sinceFirst.nsecsElapsed() / m_plan.pace.count();
}

} // namespace varnel::practice
