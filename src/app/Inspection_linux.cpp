#include "app/Askpass.h"

#include <sys/prctl.h>
#include <sys/resource.h>

namespace varnel {

void forbidInspection()
{
    const rlimit none{0, 0};
    setrlimit(RLIMIT_CORE, &none);
    prctl(PR_SET_DUMPABLE, 0);
}

} // namespace varnel
