#include "tunnel/TunnelProcess.h"

#include "base/ChildDescriptors.h"
#include "base/Text.h"
#include "providers/VarnelError.h"
#include "tunnel/ProcessHandle.h"

#include <QCoreApplication>

#include <csignal>

namespace varnel {

namespace {

using namespace std::chrono_literals;

/// How long a child that is asked to end may take before it is killed.
constexpr auto patience = 1s;

} // namespace

void TunnelProcess::LetGo::operator()(QProcess* process) const
{
    process->disconnect();
    // One that has ended just now is collected here: the event loop may not turn again.
    process->waitForFinished(0);
    // Should the event loop end first, the application ends the child with itself.
    process->setParent(QCoreApplication::instance());
    if (process->state() == QProcess::NotRunning) {
        process->deleteLater();
        return;
    }
    QObject::connect(process, &QProcess::readyReadStandardOutput, process, &QProcess::readAllStandardOutput);
    QObject::connect(process, &QProcess::stateChanged, process, [process](QProcess::ProcessState state) {
        if (state == QProcess::NotRunning)
            process->deleteLater();
    });
}

TunnelProcess::TunnelProcess(const QString& program, const QStringList& arguments,
                             const std::optional<QProcessEnvironment>& environment, EndHandler onEnd)
    : m_onEnd(std::move(onEnd))
    , m_process(new QProcess)
{
    m_process->setProgram(program);
    m_process->setArguments(arguments);
    if (environment)
        m_process->setProcessEnvironment(*environment);
    m_process->setProcessChannelMode(QProcess::MergedChannels);
    m_process->setInputChannelMode(QProcess::ForwardedInputChannel);
    m_process->setChildProcessModifier(closeDescriptorsOnExec);

    // Connected before the launch: a child may end before anybody could look at it.
    QProcess* const context = m_process.get();
    QObject::connect(context, &QProcess::readyReadStandardOutput, context, [this] { readOutput(); });
    QObject::connect(context, &QProcess::stateChanged, context, [this] { m_changed.notify(); });
    QObject::connect(context, &QProcess::finished, context, [this] { finish(); });
    m_process->start(QIODevice::ReadOnly);
}

Task<void> TunnelProcess::launched()
{
    while (m_process->state() == QProcess::Starting)
        co_await m_changed.wait();
    if (m_process->error() == QProcess::FailedToStart) {
        throw VarnelError::api(QStringLiteral("%1 could not be started (%2).")
                                   .arg(m_process->program(), m_process->errorString()));
    }
}

void TunnelProcess::terminate()
{
    if (isRunning())
        ProcessHandle(pid()).signal(SIGTERM);
}

void TunnelProcess::stop()
{
    if (!isRunning())
        return;
    const ProcessHandle handle(pid());
    handle.signal(SIGTERM);
    if (!handle.endsWithin(patience))
        handle.signal(SIGKILL);
}

void TunnelProcess::readOutput()
{
    m_output.append(m_process->readAllStandardOutput());
}

void TunnelProcess::finish()
{
    readOutput();
    const QByteArray bytes = m_output.bytes();
    const QString output = isUtf8(bytes) ? QString::fromUtf8(bytes) : QString();
    // The handler may destroy this object, and is told once.
    if (const EndHandler onEnd = std::exchange(m_onEnd, nullptr))
        onEnd(m_process->exitCode(), output);
}

} // namespace varnel
