#pragma once

#include "base/Task.h"

#include <QString>

#include <stop_token>

namespace varnel {

class ProcessRunner;
class Worker;

/// The absolute path of the running program, empty if it cannot be found. To be taken when the program
/// starts: an upgrade replaces the file, and then the system knows only the name of the one that is gone.
QString ownProgramPath();

/// Where this system keeps lsof and ps.
QString lsofPath();
QString psPath();

/// Whether the process itself, and nobody else, listens on 127.0.0.1 and the port, or on every IPv4 address
/// and the port. The process is the user's own. Runner and worker outlive the task.
Task<bool> listensOnLoopback(const ProcessRunner& runner, Worker& worker, qint64 pid, int port,
                             std::stop_token stop);

} // namespace varnel
