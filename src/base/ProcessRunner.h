#pragma once

#include "base/Task.h"

#include <QByteArray>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

#include <chrono>
#include <optional>
#include <stop_token>

namespace varnel {

/// A system tool to be run to its end.
struct ProcessRequest
{
    QString program; ///< an absolute path; no search path is looked at, and no shell is between
    QStringList arguments;
    std::optional<QProcessEnvironment> environment; ///< this program's own if there is none
    std::chrono::milliseconds timeLimit = std::chrono::seconds(5);

    bool operator==(const ProcessRequest&) const = default;
};

/// How a tool ended and what it wrote.
struct ProcessOutput
{
    enum class End {
        Exited,        ///< by itself; the status is its exit status
        Signalled,     ///< by a signal; the status is its number
        FailedToStart, ///< there is no such program, or it cannot be executed
        TimedOut,      ///< it was killed at the time limit; what it wrote until then is kept
    };
    End end = End::FailedToStart;
    int status = 0;
    QByteArray standardOutput; ///< the last mebibyte of it, see BoundedTail
    QByteArray standardError;  ///< likewise

    bool operator==(const ProcessOutput&) const = default;
};

/// Runs system tools. Tests put a table of answers in its place.
class ProcessRunner
{
public:
    ProcessRunner() = default;
    ProcessRunner(const ProcessRunner&) = delete;
    ProcessRunner& operator=(const ProcessRunner&) = delete;
    ProcessRunner(ProcessRunner&&) = delete;
    ProcessRunner& operator=(ProcessRunner&&) = delete;
    virtual ~ProcessRunner() = default;

    /// Ends when the tool has ended, whether or not something it started still holds its output open. A stop
    /// kills the tool and throws Cancelled; destroying the task kills it too. No other way to end is an
    /// error.
    virtual Task<ProcessOutput> run(ProcessRequest request, std::stop_token stop) const = 0;
};

/// Runs real processes: standard input is empty, both outputs are read all the time, and no descriptor of
/// this program but those three reaches them. Needs an event loop.
class SystemProcessRunner final : public ProcessRunner
{
public:
    Task<ProcessOutput> run(ProcessRequest request, std::stop_token stop) const override;
};

} // namespace varnel
