#include "base/ProcessRunner.h"

#include "base/BoundedTail.h"
#include "base/ChildDescriptors.h"
#include "base/Error.h"
#include "base/StopWakeup.h"
#include "base/Wakeup.h"

#include <QCoreApplication>
#include <QDir>
#include <QProcess>
#include <QTimer>

#include <memory>

namespace varnel {

namespace {

using namespace std::chrono_literals;

/// How long a killed process is given to die; one that hangs inside the system may take for ever.
constexpr auto deathLimit = 500ms;

/// Lets go of a process without blocking: one that still runs is killed, and its end is collected later by
/// the event loop. (The destructor of a running QProcess would wait for it here and now.)
struct Abandon
{
    void operator()(QProcess* process) const
    {
        process->disconnect();
        if (process->state() == QProcess::NotRunning) {
            delete process;
            return;
        }
        QObject::connect(process, &QProcess::stateChanged, process, [process](QProcess::ProcessState state) {
            if (state == QProcess::NotRunning)
                process->deleteLater();
        });
        // Should the event loop end first, the application ends the process with itself.
        if (QCoreApplication* const application = QCoreApplication::instance();
            application && application->thread() == process->thread())
            process->setParent(application);
        process->kill();
    }
};

/// One process from its start to its end; tells the wake-up whenever there is something to look at.
class Run
{
public:
    Run(const ProcessRequest& request, Wakeup& wakeup)
        : m_wakeup(wakeup)
        , m_process(new QProcess)
    {
        m_process->setProgram(request.program);
        m_process->setArguments(request.arguments);
        if (request.environment)
            m_process->setProcessEnvironment(*request.environment);
        m_process->setStandardInputFile(QProcess::nullDevice());
        m_process->setChildProcessModifier(closeDescriptorsOnExec);

        QProcess* const context = m_process.get();
        QObject::connect(context, &QProcess::readyReadStandardOutput, context, [this] { readOutput(); });
        QObject::connect(context, &QProcess::readyReadStandardError, context, [this] { readOutput(); });
        QObject::connect(context, &QProcess::stateChanged, context, [this] { m_wakeup.notify(); });
        QObject::connect(&m_timer, &QTimer::timeout, context, [this] { runOutOfTime(); });
        m_timer.setSingleShot(true);
        m_timer.start(request.timeLimit);
        m_process->start(QIODevice::ReadOnly);
    }

    bool isOver() const { return m_process->state() == QProcess::NotRunning || m_givenUp; }

    ProcessOutput output()
    {
        readOutput();
        const ProcessOutput::End how = end();
        const bool hasStatus = how == ProcessOutput::End::Exited || how == ProcessOutput::End::Signalled;
        return {.end = how,
                .status = hasStatus ? m_process->exitCode() : 0,
                .standardOutput = m_standardOutput.bytes(),
                .standardError = m_standardError.bytes()};
    }

private:
    void readOutput()
    {
        m_standardOutput.append(m_process->readAllStandardOutput());
        m_standardError.append(m_process->readAllStandardError());
    }

    void runOutOfTime()
    {
        m_givenUp = m_timedOut;
        m_timedOut = true;
        m_process->kill();
        m_timer.start(deathLimit);
        m_wakeup.notify();
    }

    ProcessOutput::End end() const
    {
        if (m_timedOut)
            return ProcessOutput::End::TimedOut;
        if (m_process->error() == QProcess::FailedToStart)
            return ProcessOutput::End::FailedToStart;
        return m_process->exitStatus() == QProcess::NormalExit ? ProcessOutput::End::Exited
                                                               : ProcessOutput::End::Signalled;
    }

    Wakeup& m_wakeup;
    BoundedTail m_standardOutput;
    BoundedTail m_standardError;
    QTimer m_timer;
    bool m_timedOut = false;
    bool m_givenUp = false;
    std::unique_ptr<QProcess, Abandon> m_process;
};

} // namespace

Task<ProcessOutput> SystemProcessRunner::run(ProcessRequest request, std::stop_token stop) const
{
    if (stop.stop_requested())
        throw Cancelled();
    if (!QDir::isAbsolutePath(request.program))
        co_return ProcessOutput{};

    Wakeup wakeup;
    const StopWakeup onStop(stop, wakeup);
    Run run(request, wakeup);
    while (!run.isOver()) {
        co_await wakeup.wait();
        if (stop.stop_requested())
            throw Cancelled();
    }
    co_return run.output();
}

} // namespace varnel
