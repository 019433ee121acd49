#include "tunnel/TunnelPort.h"

#include "base/Clock.h"
#include "base/ProcessRunner.h"
#include "base/Text.h"
#include "base/Worker.h"
#include "tunnel/LoopbackPort.h"
#include "tunnel/ProcessHandle.h"
#include "tunnel/SshArguments.h"
#include "tunnel/SshCommandLine.h"
#include "tunnel/TunnelSystem.h"

#include <QRegularExpression>

#include <algorithm>
#include <csignal>

namespace varnel {

namespace {

using namespace std::chrono_literals;
using Occupant = TunnelPort::Occupant;

/// How long a stale tunnel may take to end, and how often one looks whether it has.
constexpr auto patience = 2s;
constexpr std::chrono::milliseconds pace = 50ms;

Task<QString> commandOf(const ProcessRunner* runner, qint32 pid, std::stop_token stop)
{
    const QString output = co_await TunnelPort::runTool(
        *runner, psPath(),
        {QStringLiteral("-p"), QString::number(pid), QStringLiteral("-o"), QStringLiteral("command=")}, stop);
    co_return output.trimmed();
}

Task<std::vector<Occupant>> listOccupants(const ProcessRunner* runner, int port, std::stop_token stop)
{
    const QString listing =
        co_await TunnelPort::runTool(*runner, lsofPath(),
                                     {QStringLiteral("-nP"), QStringLiteral("-iTCP:%1").arg(port),
                                      QStringLiteral("-sTCP:LISTEN"), QStringLiteral("-t")},
                                     stop);
    std::vector<Occupant> occupants;
    for (const QString& line : listing.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        bool isNumber = false;
        const qint32 pid = line.trimmed().toInt(&isNumber);
        const auto hasPid = [pid](const Occupant& occupant) { return occupant.pid == pid; };
        // Zero and less would be whole groups of processes once a signal is sent.
        if (!isNumber || pid <= 0 || std::any_of(occupants.begin(), occupants.end(), hasPid))
            continue;
        occupants.push_back({.pid = pid, .command = co_await commandOf(runner, pid, stop)});
    }
    co_return occupants;
}

/// What a stale tunnel is recognised by.
struct Pattern
{
    QString forward;
    QString destination;

    bool matches(const QString& command) const { return TunnelPort::isTunnel(command, forward, destination); }
    bool matches(const Occupant& occupant) const { return matches(occupant.command); }
};

/// Whether the process was still the tunnel when it was taken hold of, and was sent SIGTERM.
Task<bool> endTunnel(const ProcessRunner* runner, qint32 pid, Pattern pattern, std::stop_token stop)
{
    const ProcessHandle handle(pid);
    if (!pattern.matches(co_await commandOf(runner, pid, stop)))
        co_return false;
    handle.signal(SIGTERM);
    co_return true;
}

Task<void> reclaimPort(const ProcessRunner* runner, const Clock* clock, int port, Pattern pattern,
                       std::stop_token stop)
{
    bool isAnyEnding = false;
    for (const Occupant& occupant : co_await listOccupants(runner, port, stop)) {
        if (pattern.matches(occupant) && co_await endTunnel(runner, occupant.pid, pattern, stop))
            isAnyEnding = true;
    }
    const auto deadline = clock->steadyNow() + patience;
    while (isAnyEnding && clock->steadyNow() < deadline) {
        const std::vector<Occupant> left = co_await listOccupants(runner, port, stop);
        isAnyEnding = std::any_of(left.begin(), left.end(),
                                  [&pattern](const Occupant& occupant) { return pattern.matches(occupant); });
        if (isAnyEnding)
            co_await clock->sleepFor(pace, stop);
    }
}

Task<void> nothing()
{
    co_return;
}

} // namespace

TunnelPort::TunnelPort(const ProcessRunner& runner, Worker& worker, const Clock& clock)
    : m_runner(runner)
    , m_worker(worker)
    , m_clock(clock)
{}

Task<std::vector<Occupant>> TunnelPort::occupants(int port, std::stop_token stop) const
{
    return listOccupants(&m_runner, port, std::move(stop));
}

Task<bool> TunnelPort::isBlocked(int port, std::stop_token stop) const
{
    return m_worker.run([port](const std::stop_token&) { return !isLoopbackPortFree(port); },
                        std::move(stop));
}

Task<void> TunnelPort::reclaim(const ConnectionSettings& settings, std::stop_token stop) const
{
    const std::optional<QString> forward = sshForward(settings);
    const std::optional<QString> destination = sshDestination(settings);
    if (!forward || !destination)
        return nothing();
    return reclaimPort(&m_runner, &m_clock, tunnelLocalPort(settings),
                       {.forward = *forward, .destination = *destination}, std::move(stop));
}

Task<QString> TunnelPort::runTool(const ProcessRunner& runner, QString program, QStringList arguments,
                                  std::stop_token stop)
{
    // ps cuts its lines where these say that a terminal ends.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("COLUMNS"));
    environment.remove(QStringLiteral("LINES"));
    const ProcessOutput output = co_await runner.run(
        {.program = std::move(program), .arguments = std::move(arguments), .environment = environment}, stop);
    const bool isAnswer = output.end != ProcessOutput::End::TimedOut && isUtf8(output.standardOutput);
    co_return isAnswer ? QString::fromUtf8(output.standardOutput) : QString();
}

bool TunnelPort::isTunnel(const QString& command, const QString& forward, const QString& destination)
{
    static const QRegularExpression blanks(QStringLiteral("\\s+"));
    QStringList words = command.split(blanks, Qt::SkipEmptyParts);
    if (words.isEmpty() ||
        (words.first() != QLatin1String("ssh") && !words.first().endsWith(QLatin1String("/ssh"))))
        return false;
    // The path of a key may hold blanks; what stands behind it in a line of ours tells where it ends.
    const qsizetype key = words.indexOf(QLatin1String("-i")) + 1;
    const qsizetype keyEnd = words.indexOf(QLatin1String("IdentitiesOnly=yes")) - 1;
    if (key > 0 && keyEnd > key)
        words.remove(key, keyEnd - key - 1);
    const SshCommandLine line = parseSshCommandLine(words.mid(1));
    return line.forwards.contains(forward) && !line.operands.isEmpty() &&
           line.operands.first() == destination;
}

} // namespace varnel
