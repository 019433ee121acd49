#include "store/FileSystem.h"

#include <sys/stat.h>
#include <unistd.h>

namespace varnel {

bool syncFile(int descriptor)
{
    return fdatasync(descriptor) == 0;
}

qint64 modificationTime(const struct stat& status)
{
    return qint64(status.st_mtim.tv_sec) * 1'000'000'000 + status.st_mtim.tv_nsec;
}

} // namespace varnel
