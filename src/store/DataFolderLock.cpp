#include "store/DataFolderLock.h"

#include "store/RuntimeFolder.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace varnel {

std::optional<DataFolderLock> DataFolderLock::take(const QString& dataFolder)
{
    const QString path = runtimePath(dataFolder, QStringLiteral(".lock"));
    FileDescriptor file(::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW,
                               S_IRUSR | S_IWUSR));
    if (!file.isOpen())
        throw fileError(path, QStringLiteral("could not be opened"), errno);
    // The file stays when the lock goes: removing it could take it from under somebody who just opened it.
    while (::flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno == EWOULDBLOCK)
            return std::nullopt;
        if (errno != EINTR)
            throw fileError(path, QStringLiteral("could not be locked"), errno);
    }
    return DataFolderLock(std::move(file));
}

} // namespace varnel
