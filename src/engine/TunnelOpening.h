#pragma once

#include "base/Clock.h"
#include "base/Error.h"
#include "base/Task.h"
#include "store/ConnectionSettings.h"
#include "tunnel/TunnelController.h"
#include "tunnel/TunnelPort.h"

#include <QString>

#include <functional>
#include <stop_token>

namespace varnel {

/// How ssh ended by itself.
struct TunnelExit
{
    int status = 0;
    /// What it said last, in one line; may be empty.
    QString summary;

    bool operator==(const TunnelExit&) const = default;
};

/// What the opening of a tunnel tells its owner while it runs.
struct TunnelObserver
{
    /// ssh stayed up; its login may still be under way.
    std::function<void()> onStarted;
    /// ssh ended before the tunnel could be used; what it said last.
    std::function<void(const QString& summary)> onExited;
};

/// Opens the tunnel: ends those that an earlier run left on the port, sees that the port is free, starts ssh
/// and waits until it listens there, for at most 20 seconds after it proved stable. Ends when the server can
/// be asked.
///
/// Throws Error whose message is what the user is told, or Cancelled. All but the settings outlive the task.
Task<void> openTunnel(TunnelController& tunnel, const TunnelPort& port, const Clock& clock,
                      ConnectionSettings settings, TunnelObserver observer, std::stop_token stop);

/// What the user is told when ssh ended before the server was reached through it.
Error tunnelDidNotStayOpen(const QString& host, const QString& summary);

/// "me@gpu-box 11434:127.0.0.1:11434", for the log.
QString tunnelDescription(const ConnectionSettings& settings);
/// "status=255 Connection refused", for the log.
QString tunnelExitDetail(int status, const QString& summary);

} // namespace varnel
