#include "base/ChildDescriptors.h"

#include <fcntl.h>
#include <linux/close_range.h>
#include <unistd.h>

#include <algorithm>
#include <limits>

namespace varnel {

void closeDescriptorsOnExec() noexcept
{
    constexpr int first = 3;
    if (::close_range(first, std::numeric_limits<unsigned>::max(), CLOSE_RANGE_CLOEXEC) == 0)
        return;
    // Kernels before 5.11, and sandboxes that forbid the call.
    // Containers may allow a thousand million descriptors, or say nothing of a limit; far fewer are ever open
    // here, because numbers are given from the lowest free one.
    constexpr long enough = 65536;
    const long limit = ::sysconf(_SC_OPEN_MAX);
    const long count = limit < 0 ? enough : std::min(limit, enough);
    for (int descriptor = first; descriptor < count; ++descriptor)
        ::fcntl(descriptor, F_SETFD, FD_CLOEXEC);
}

} // namespace varnel
