#pragma once

#include "base/Task.h"
#include "base/Worker.h"
#include "store/ConnectionSettings.h"
#include "tunnel/SshArguments.h"
#include "tunnel/TunnelSystem.h"

#include <QString>

#include <chrono>
#include <functional>
#include <memory>
#include <stop_token>

namespace varnel {

class Clock;
class ProcessRunner;
class SecretStore;
class TunnelProcess;

/// Runs and supervises the one ssh child that forwards a local port to the Ollama host. It builds the command
/// line, names this program as ssh's askpass helper when a password is saved, keeps what ssh prints, and
/// tells when the child ended by itself. Whether the tunnel works, and what the user is told, is its owner's
/// business.
///
/// Everything happens on the event loop of one thread. The controller outlives the tasks that it hands out;
/// destroying it stops the child.
class TunnelController
{
public:
    /// What the controller works with; all of it outlives the controller. The secrets are shared because a
    /// keyring that hangs may be asked for longer than anybody waits.
    struct Services
    {
        std::shared_ptr<SecretStore> secrets;
        const ProcessRunner& runner;
        Worker& worker;
        const Clock& clock;
    };

    struct Programs
    {
        QString ssh = QStringLiteral("/usr/bin/ssh");
        QString own = ownProgramPath(); ///< what ssh asks for the password
    };

    /// The exit status of ssh, or the number of the signal that ended it, and what it had printed.
    using ExitHandler = std::function<void(int status, const QString& output)>;

    TunnelController(Services services, Programs programs);
    TunnelController(const TunnelController&) = delete;
    TunnelController& operator=(const TunnelController&) = delete;
    TunnelController(TunnelController&&) = delete;
    TunnelController& operator=(TunnelController&&) = delete;
    /// Does what stop() does.
    ~TunnelController();

    /// Called on the event loop whenever the current child ends by itself: never for one that was stopped,
    /// detached or replaced. It may call anything here, or destroy the controller.
    void setOnExit(ExitHandler handler) { m_onExit = std::move(handler); }

    /// Ends when ssh is being executed, which is long before the forward is there. Reading the password may
    /// ask the user to unlock the keyring, so that askpass, which never asks, finds it open. A child that an
    /// earlier start launched is let go of, not ended.
    ///
    /// Throws VarnelError if the settings are not usable, if there is a password but nobody to answer with
    /// it, or if ssh cannot be executed; Cancelled if a stop is requested, or if stop(), detach() or another
    /// start comes before it has ended.
    Task<void> start(ConnectionSettings settings, std::stop_token stop);
    /// Ends the child, if there is one, and blocks until it is gone: one that is still there after a second
    /// is killed. Nobody is told of its end.
    void stop();
    /// Hands the running child, or null, to the caller, who decides how to end it. Nobody is told of its end.
    std::shared_ptr<TunnelProcess> detach();

    bool isRunning() const;
    /// What the last child that ended by itself had printed; empty from the next launch on.
    const QString& output() const { return m_output; }
    /// Counts launches and stops; what began under another number is outdated.
    qint64 generation() const { return m_generation; }

    /// Waits while the child runs, for `duration` at most; whether it still runs then. If it does not, its
    /// output is there.
    Task<bool> waitUntilStable(std::chrono::milliseconds duration, std::stop_token stop) const;
    /// Whether the child itself listens on the local port, which is when a login has succeeded and the tunnel
    /// can be used. A child that hands its forward to a shared connection of the user's never does.
    Task<bool> isListening(std::stop_token stop) const;
    /// The child's; 0 while none runs.
    qint64 processId() const;

    /// One short line of what ssh printed, for a status text; empty if it printed nothing.
    static QString summary(const QString& output);

private:
    Task<SavedPassword> readPassword(std::stop_token stop);
    void launch(const ConnectionSettings& settings, SavedPassword password);
    void childEnded(int status, const QString& output);
    /// Ends a child whose start nobody waits for any more, and tells nobody of its end.
    void abandon(const std::shared_ptr<TunnelProcess>& child);

    Services m_services;
    Programs m_programs;
    Worker m_passwords; // the user may take minutes to unlock a keyring, and others need the shared one
    ExitHandler m_onExit;
    std::shared_ptr<TunnelProcess> m_child;
    int m_localPort = 0;
    QString m_output;
    qint64 m_generation = 0;
};

} // namespace varnel
