#include "store/FileSystem.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace varnel {

bool syncFile(int descriptor)
{
    return fdatasync(descriptor) == 0;
}

void startSync(int descriptor, qint64 offset, qint64 size)
{
    // It is only a hint: what goes wrong shows when the file is synced.
    static_cast<void>(::sync_file_range(descriptor, offset, size, SYNC_FILE_RANGE_WRITE));
}

qint64 modificationTime(const struct stat& status)
{
    return qint64(status.st_mtim.tv_sec) * 1'000'000'000 + status.st_mtim.tv_nsec;
}

} // namespace varnel
