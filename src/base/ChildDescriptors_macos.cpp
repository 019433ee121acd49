#include "base/ChildDescriptors.h"

#include <fcntl.h>
#include <unistd.h>

namespace varnel {

void closeDescriptorsOnExec() noexcept
{
    const int count = ::getdtablesize();
    for (int descriptor = 3; descriptor < count; ++descriptor)
        ::fcntl(descriptor, F_SETFD, FD_CLOEXEC);
}

} // namespace varnel
