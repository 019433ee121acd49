#pragma once

#include "base/Task.h"
#include "store/ConnectionSettings.h"

#include <QString>
#include <QStringList>

#include <stop_token>
#include <vector>

namespace varnel {

class Clock;
class ProcessRunner;
class Worker;

/// Who holds a local port, as the system's own tools tell, and the end of tunnels that an earlier run of this
/// program left behind. It keeps no state.
///
/// Nothing here is an error: a tool that is missing, fails or hangs has said nothing. All tasks throw
/// Cancelled when a stop is requested, and nothing else.
class TunnelPort
{
public:
    /// A process that listens on the port.
    struct Occupant
    {
        qint32 pid = 0;
        QString command; ///< its whole command line; empty if it ended in the meantime

        bool operator==(const Occupant&) const = default;
    };

    /// All of them outlive the tasks.
    TunnelPort(const ProcessRunner& runner, Worker& worker, const Clock& clock);

    /// The processes that listen on the port, in the order in which the system lists them, each once. Another
    /// user's are not always among them: see isBlocked().
    Task<std::vector<Occupant>> occupants(int port, std::stop_token stop) const;
    /// Whether 127.0.0.1 and the port cannot be had, whoever has it: somebody answers there, or it cannot be
    /// listened on. ssh is content with ::1 alone and would stay up beside another user's program.
    Task<bool> isBlocked(int port, std::stop_token stop) const;
    /// Asks every ssh that listens on the local port with the forward and destination of the settings to end,
    /// and waits for up to two seconds until none is left.
    Task<void> reclaim(const ConnectionSettings& settings, std::stop_token stop) const;

    /// Runs a program to its end and returns its standard output; empty if it could not be run, took too long
    /// or wrote something else than UTF-8.
    static Task<QString> runTool(const ProcessRunner& runner, QString program, QStringList arguments,
                                 std::stop_token stop);
    /// Whether a command line is an ssh with just this forward to just this destination. Words are compared
    /// whole, so that "me@gpu-box" is not found in "me@gpu-box2".
    static bool isTunnel(const QString& command, const QString& forward, const QString& destination);

private:
    const ProcessRunner& m_runner;
    Worker& m_worker;
    const Clock& m_clock;
};

} // namespace varnel
