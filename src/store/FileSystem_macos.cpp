// Written for macOS after its manual pages; it has never been built or run there.
#include "store/FileSystem.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace varnel {

bool syncFile(int descriptor)
{
    // fsync() stops at the drive's own cache there; file systems that know no better way refuse the command.
    return fcntl(descriptor, F_FULLFSYNC) == 0 || fsync(descriptor) == 0;
}

void startSync(int /*descriptor*/, qint64 /*offset*/, qint64 /*size*/) {}

qint64 modificationTime(const struct stat& status)
{
    return qint64(status.st_mtimespec.tv_sec) * 1'000'000'000 + status.st_mtimespec.tv_nsec;
}

} // namespace varnel
