// Never built here: written after Apple's documentation, still to be tried on macOS.
#include "tunnel/ProcessHandle.h"

#include <cerrno>
#include <csignal>
#include <sys/event.h>
#include <unistd.h>

namespace varnel {

using namespace std::chrono;

// There are no handles to signal through, but a queue that tells of the end.
ProcessHandle::ProcessHandle(qint64 pid)
    : m_pid(static_cast<int>(pid))
    , m_descriptor(::kqueue())
{
    struct kevent change;
    EV_SET(&change, static_cast<uintptr_t>(m_pid), EVFILT_PROC, EV_ADD, NOTE_EXIT, 0, nullptr);
    if (::kevent(m_descriptor, &change, 1, nullptr, 0, nullptr) != 0 && errno == ESRCH)
        m_pid = 0;
}

ProcessHandle::~ProcessHandle()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

void ProcessHandle::signal(int number) const
{
    if (m_pid > 0) // zero and less would mean whole groups
        ::kill(m_pid, number);
}

bool ProcessHandle::endsWithin(milliseconds limit) const
{
    if (m_pid <= 0)
        return true;
    const auto deadline = steady_clock::now() + limit;
    for (;;) {
        const auto left = std::max(ceil<milliseconds>(deadline - steady_clock::now()), milliseconds(0));
        const timespec time{.tv_sec = static_cast<time_t>(left.count() / 1000),
                            .tv_nsec = static_cast<long>(left.count() % 1000 * 1000000)};
        struct kevent event;
        const int count = ::kevent(m_descriptor, nullptr, 0, &event, 1, &time);
        if (count >= 0 || errno != EINTR)
            return count == 1;
    }
}

} // namespace varnel
