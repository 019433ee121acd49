// Written for macOS after open(2); it has never been built or run there.
#include "store/WholePathOpen.h"

#include <fcntl.h>

namespace varnel {

int openWholePath(int below, const char* path) noexcept
{
    // Without links and without "..", which no caller passes, a path cannot lead elsewhere.
    return ::openat(below, path, O_RDONLY | O_DIRECTORY | O_NOFOLLOW_ANY | O_CLOEXEC);
}

} // namespace varnel
