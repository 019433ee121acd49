#pragma once

#include <QtGlobal>

#include <chrono>

namespace varnel {

/// Keeps hold of one process, so that a signal reaches that one and never another that was given its number
/// in the meantime. Where the system has no such handles, it is the number and nothing more.
class ProcessHandle
{
public:
    /// Takes hold of the process that has the number now, if there is one.
    explicit ProcessHandle(qint64 pid);
    ProcessHandle(const ProcessHandle&) = delete;
    ProcessHandle& operator=(const ProcessHandle&) = delete;
    ProcessHandle(ProcessHandle&&) = delete;
    ProcessHandle& operator=(ProcessHandle&&) = delete;
    ~ProcessHandle();

    /// Sends a signal. A process that has ended, or that is not ours to signal, gets none; that is no error.
    void signal(int number) const;
    /// Blocks until the process has ended, collected or not, or the limit has passed; whether it has ended.
    bool endsWithin(std::chrono::milliseconds limit) const;

private:
    int m_pid;
    int m_descriptor = -1;
};

} // namespace varnel
