#include "tunnel/ProcessHandle.h"

#include <cerrno>
#include <csignal>
#include <poll.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace varnel {

using namespace std::chrono;

// The C library of Debian 12 has functions for these calls, older ones do not.
ProcessHandle::ProcessHandle(qint64 pid)
    : m_pid(static_cast<int>(pid))
    , m_descriptor(static_cast<int>(::syscall(SYS_pidfd_open, m_pid, 0)))
{
    if (m_descriptor < 0 && errno == ESRCH)
        m_pid = 0;
}

ProcessHandle::~ProcessHandle()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

void ProcessHandle::signal(int number) const
{
    if (m_descriptor >= 0)
        ::syscall(SYS_pidfd_send_signal, m_descriptor, number, nullptr, 0);
    else if (m_pid > 0) // zero and less would mean whole groups
        ::kill(m_pid, number);
}

bool ProcessHandle::endsWithin(milliseconds limit) const
{
    const auto deadline = steady_clock::now() + limit;
    for (;;) {
        const auto left = std::max(ceil<milliseconds>(deadline - steady_clock::now()), milliseconds(0));
        if (m_descriptor >= 0) {
            pollfd waiting{.fd = m_descriptor, .events = POLLIN, .revents = 0};
            const int count = ::poll(&waiting, 1, static_cast<int>(left.count()));
            if (count >= 0 || errno != EINTR)
                return count == 1;
        } else if (m_pid <= 0 || ::kill(m_pid, 0) != 0) {
            return true;
        } else if (left == milliseconds(0)) {
            return false;
        } else {
            std::this_thread::sleep_for(std::min(left, milliseconds(50)));
        }
    }
}

} // namespace varnel
