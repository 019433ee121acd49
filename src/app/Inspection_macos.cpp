// Never built here: written after Apple's documentation, still to be tried on macOS.
#include "app/Askpass.h"

#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/types.h>

namespace varnel {

void forbidInspection()
{
    const rlimit none{0, 0};
    setrlimit(RLIMIT_CORE, &none);
    ptrace(PT_DENY_ATTACH, 0, nullptr, 0);
}

} // namespace varnel
