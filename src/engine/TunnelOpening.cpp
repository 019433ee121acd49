#include "engine/TunnelOpening.h"

#include "base/Error.h"

#include <algorithm>

namespace varnel {

namespace {

using std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr auto provingTime = 1500ms;
constexpr auto longestLogin = 20s;
constexpr auto betweenLooks = 100ms;
constexpr int looksBetweenListings = 10;

/// Whoever stopped it took ssh away, whose absence then means nothing.
void throwIfStopped(const std::stop_token& stop)
{
    if (stop.stop_requested())
        throw Cancelled();
}

Error portInUse(int port, const QString& host)
{
    return Error(QStringLiteral("Local port %1 is already in use, so the tunnel to %2 could not open.")
                     .arg(QString::number(port), host));
}

/// Whether ssh listens on the port, but not where requests go: somebody took 127.0.0.1 while it logged in,
/// and it is content with ::1.
Task<bool> missedItsPlace(const TunnelController& tunnel, const TunnelPort& port, int local,
                          std::stop_token stop)
{
    const std::vector<TunnelPort::Occupant> occupants = co_await port.occupants(local, stop);
    const bool listens =
        std::any_of(occupants.begin(), occupants.end(),
                    [&tunnel](const TunnelPort::Occupant& each) { return each.pid == tunnel.processId(); });
    co_return listens && !(co_await tunnel.isListening(stop)) && co_await port.isBlocked(local, stop);
}

} // namespace

Error tunnelDidNotStayOpen(const QString& host, const QString& summary)
{
    QString message = QStringLiteral("The tunnel to %1 did not stay open.").arg(host);
    if (!summary.isEmpty())
        message += QLatin1Char(' ') + summary;
    return Error(message);
}

QString tunnelDescription(const ConnectionSettings& settings)
{
    return QStringLiteral("%1 %2").arg(sshDestination(settings).value_or(QString()),
                                       sshForward(settings).value_or(QString()));
}

QString tunnelExitDetail(int status, const QString& summary)
{
    const QString detail = QStringLiteral("status=%1").arg(status);
    return summary.isEmpty() ? detail : detail + QLatin1Char(' ') + summary;
}

Task<void> openTunnel(TunnelController& tunnel, const TunnelPort& port, const Clock& clock,
                      ConnectionSettings settings, TunnelObserver observer, std::stop_token stop)
{
    const QString host = settings.hostLabel();
    const int local = tunnelLocalPort(settings);
    co_await port.reclaim(settings, stop);
    const bool isHeld =
        !(co_await port.occupants(local, stop)).empty() || co_await port.isBlocked(local, stop);
    if (isHeld)
        throw portInUse(local, host);
    co_await tunnel.start(settings, stop);
    bool isRunning = co_await tunnel.waitUntilStable(provingTime, stop);
    throwIfStopped(stop);
    if (isRunning) {
        observer.onStarted();
        // A login that asks for a password takes longer than that.
        const steady_clock::time_point deadline = clock.steadyNow() + longestLogin;
        for (int look = 1; clock.steadyNow() < deadline; ++look) {
            if (!tunnel.isRunning() || co_await tunnel.isListening(stop))
                break;
            if (look % looksBetweenListings == 0 && co_await missedItsPlace(tunnel, port, local, stop))
                throw portInUse(local, host);
            co_await clock.sleepFor(betweenLooks, stop);
        }
        isRunning = tunnel.isRunning();
        throwIfStopped(stop);
    }
    if (!isRunning) {
        const QString summary = TunnelController::summary(tunnel.output());
        observer.onExited(summary);
        throw tunnelDidNotStayOpen(host, summary);
    }
}

} // namespace varnel
