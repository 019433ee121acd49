#include "base/ChildDescriptors.h"

#include <fcntl.h>
#include <linux/close_range.h>
#include <unistd.h>

#include <limits>

namespace varnel {

void closeDescriptorsOnExec() noexcept
{
    constexpr int first = 3;
    if (::close_range(first, std::numeric_limits<unsigned>::max(), CLOSE_RANGE_CLOEXEC) == 0)
        return;
    // Kernels before 5.11, and sandboxes that forbid the call.
    const long count = ::sysconf(_SC_OPEN_MAX);
    for (int descriptor = first; descriptor < count; ++descriptor)
        ::fcntl(descriptor, F_SETFD, FD_CLOEXEC);
}

} // namespace varnel
