#include "ui/QuitSignals.h"

#include <QCoreApplication>

#include <array>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace varnel {

namespace {

constexpr std::array quittingSignals{SIGTERM, SIGINT, SIGHUP};

/// The ends of a pipe: next to nothing else may be done in a signal handler but write to one.
std::array<int, 2> ends{-1, -1};

/// Whose signals they are. A child has the handlers and the pipe too until it becomes another program.
pid_t owner = -1;

void noteSignal(int signal)
{
    if (getpid() != owner) {
        // Meant for the child, which it ends as soon as this handler returns.
        std::signal(signal, SIG_DFL);
        std::raise(signal);
        return;
    }
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = write(ends[1], &byte, 1);
}

void handleSignals(void (*handler)(int), int flags)
{
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = flags;
    for (const int signal : quittingSignals) {
        struct sigaction before = {};
        // One that is ignored is ignored for a reason: nohup, for one.
        if (sigaction(signal, nullptr, &before) == 0 && before.sa_handler != SIG_IGN)
            sigaction(signal, &action, nullptr);
    }
}

} // namespace

QuitSignals::QuitSignals()
{
    if (pipe(ends.data()) != 0)
        return;
    owner = getpid();
    for (const int end : ends) {
        fcntl(end, F_SETFD, FD_CLOEXEC);
        fcntl(end, F_SETFL, O_NONBLOCK);
    }
    m_notifier = std::make_unique<QSocketNotifier>(ends[0], QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(), [this] {
        m_notifier->setEnabled(false);
        QCoreApplication::quit();
    });
    // After the first one the system's own way holds again.
    handleSignals(&noteSignal, static_cast<int>(SA_RESTART | SA_RESETHAND));
}

QuitSignals::~QuitSignals()
{
    if (!m_notifier)
        return;
    m_notifier.reset();
    handleSignals(SIG_DFL, 0);
    for (int& end : ends)
        close(std::exchange(end, -1));
}

} // namespace varnel
