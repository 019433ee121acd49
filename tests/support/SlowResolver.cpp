#include "support/SlowResolver.h"

#include <condition_variable>
#include <cstring>
#include <dlfcn.h>
#include <mutex>
#include <netdb.h>

namespace varnel::test {

namespace {

std::mutex mutex;
std::condition_variable released;
int waitingLookups = 0;
int generation = 0;

void waitForRelease()
{
    std::unique_lock lock(mutex);
    ++waitingLookups;
    const int entered = generation;
    released.wait(lock, [entered] { return generation != entered; });
    --waitingLookups;
}

} // namespace

int SlowResolver::waiting()
{
    const std::lock_guard lock(mutex);
    return waitingLookups;
}

void SlowResolver::release()
{
    const std::lock_guard lock(mutex);
    ++generation;
    released.notify_all();
}

} // namespace varnel::test

// The program's own symbol comes before the C library's, for libcurl as well.
extern "C" __attribute__((visibility("default"))) int getaddrinfo(const char* node, const char* service,
                                                                  const addrinfo* hints, addrinfo** result)
{
    if (node && std::strcmp(node, "slow.test") == 0) {
        varnel::test::waitForRelease();
        return EAI_NONAME;
    }
    if (node && std::strcmp(node, "proxied.test") == 0)
        return EAI_NONAME;
    using Function = int (*)(const char*, const char*, const addrinfo*, addrinfo**);
    static const auto real = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "getaddrinfo"));
    return real(node, service, hints, result);
}
