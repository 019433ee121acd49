#include "engine/PullProgress.h"

#include <QLocale>

#include <algorithm>
#include <cmath>

namespace varnel {

namespace {

using std::chrono::steady_clock;

constexpr std::chrono::seconds rateWindow(5);

QString bytes(double count)
{
    // What a server counts may be more than an integer holds.
    constexpr double most = 9e18;
    return QLocale::c().formattedDataSize(static_cast<qint64>(std::min(count, most)), 1,
                                          QLocale::DataSizeSIFormat);
}

/// Empty when it is too long to mean anything.
QString timeLeft(double seconds)
{
    constexpr double longest = 99 * 3600.0;
    if (seconds > longest)
        return {};
    const auto whole = static_cast<qint64>(std::ceil(seconds));
    if (whole < 60)
        return QStringLiteral("%1 s left").arg(whole);
    if (whole < 3600)
        return QStringLiteral("%1 min %2 s left").arg(whole / 60).arg(whole % 60);
    return QStringLiteral("%1 h %2 min left").arg(whole / 3600).arg(whole / 60 % 60);
}

} // namespace

void PullProgress::take(const StatusChunk& chunk, steady_clock::time_point now)
{
    constexpr qsizetype longestStatus = 200;
    m_status = chunk.status.value_or(QString()).left(longestStatus).simplified();
    const qint64 total = std::max<qint64>(0, chunk.total.value_or(0));
    const qint64 completed = std::clamp<qint64>(chunk.completed.value_or(0), 0, total);
    // Each file of a model is counted for itself.
    if (total != m_total || completed < m_completed)
        m_samples.clear();
    m_total = total;
    m_completed = completed;
    if (total == 0)
        return;
    m_samples.push_back({now, completed});
    while (m_samples.size() > 2 && now - m_samples[1].time > rateWindow)
        m_samples.pop_front();
}

std::optional<double> PullProgress::share() const
{
    if (m_total == 0)
        return std::nullopt;
    return static_cast<double>(m_completed) / static_cast<double>(m_total);
}

std::optional<double> PullProgress::rate() const
{
    if (m_samples.size() < 2)
        return std::nullopt;
    const std::chrono::duration<double> span = m_samples.back().time - m_samples.front().time;
    const auto fetched = static_cast<double>(m_samples.back().completed - m_samples.front().completed);
    if (span.count() < 0.5 || fetched <= 0)
        return std::nullopt;
    return fetched / span.count();
}

QString PullProgress::text() const
{
    const QString opening = QStringLiteral("Pulling %1…").arg(m_model);
    const std::optional<double> done = share();
    if (!done)
        return m_status.isEmpty() ? opening : opening + QLatin1Char(' ') + m_status;
    QStringList parts{QStringLiteral("%1 %").arg(std::floor(*done * 100)),
                      QStringLiteral("%1 of %2")
                          .arg(bytes(static_cast<double>(m_completed)), bytes(static_cast<double>(m_total)))};
    if (const std::optional<double> speed = rate()) {
        parts.push_back(bytes(*speed) + QStringLiteral("/s"));
        if (m_completed < m_total)
            parts.push_back(timeLeft(static_cast<double>(m_total - m_completed) / *speed));
        parts.removeAll(QString());
    }
    return opening + QLatin1Char(' ') + parts.join(QStringLiteral(" · "));
}

} // namespace varnel
