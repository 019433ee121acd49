#include "store/WholePathOpen.h"

#include <cerrno>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace varnel {

int openWholePath(int below, const char* path) noexcept
{
    open_how how{};
    how.flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS | RESOLVE_NO_MAGICLINKS;
    const long descriptor = ::syscall(SYS_openat2, below, path, &how, sizeof how);
    // Sandboxes that do not know the call refuse it as not permitted.
    if (descriptor < 0 && errno == EPERM)
        errno = ENOSYS;
    return static_cast<int>(descriptor);
}

} // namespace varnel
