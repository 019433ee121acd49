#pragma once

#include "base/BoundedTail.h"
#include "base/Task.h"
#include "base/Wakeup.h"

#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>

namespace varnel {

/// One ssh child from its launch to its end. What it writes is read all the time, so that a full pipe never
/// stops it, and the last mebibyte of that is kept. Letting go of it does not end it: it is still read and
/// collected by the event loop, and ended with the application at the latest.
class TunnelProcess
{
public:
    /// Called from the event loop when the child has ended.
    /// @param status the exit status, or the number of the signal that ended it.
    /// @param output what it wrote to both its outputs; empty if that is not UTF-8.
    using EndHandler = std::function<void(int status, const QString& output)>;

    /// Launches the child. It gets this program's standard input and no descriptor besides.
    /// @param environment this program's own if there is none.
    TunnelProcess(const QString& program, const QStringList& arguments,
                  const std::optional<QProcessEnvironment>& environment, EndHandler onEnd);
    TunnelProcess(const TunnelProcess&) = delete;
    TunnelProcess& operator=(const TunnelProcess&) = delete;
    TunnelProcess(TunnelProcess&&) = delete;
    TunnelProcess& operator=(TunnelProcess&&) = delete;
    ~TunnelProcess() = default;

    bool isRunning() const { return m_process->state() != QProcess::NotRunning; }
    qint64 pid() const { return m_process->processId(); }

    /// Ends once the program is being executed; throws VarnelError if it cannot be. The process outlives the
    /// task.
    Task<void> launched();
    /// Nobody is told of the end any more.
    void forgetHandler() { m_onEnd = nullptr; }
    /// Asks the child to end (SIGTERM) and does not wait for it.
    void terminate();
    /// Asks the child to end, blocks for a second at most until it has, and kills it if it has not.
    void stop();

private:
    /// The process is never deleted while it runs, which would block, nor from inside its own signals.
    struct LetGo
    {
        void operator()(QProcess* process) const;
    };

    void readOutput();
    void finish();

    EndHandler m_onEnd;
    BoundedTail m_output;
    Wakeup m_changed;
    std::unique_ptr<QProcess, LetGo> m_process;
};

} // namespace varnel
