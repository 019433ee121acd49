#include "store/FileCopy.h"

#include "store/FileAccess.h"
#include "store/ReplacingFile.h"

#include <QFileInfo>

#include <array>
#include <cerrno>
#include <unistd.h>

namespace varnel {

void copyFile(const QString& source, const QString& target)
{
    const FileDescriptor from = openRegularFile(source);
    ReplacingFile to(target);
    std::array<char, 128 * 1024> buffer{};
    for (;;) {
        const ssize_t count = ::read(from.get(), buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            throw fileError(source, QStringLiteral("could not be read"), errno);
        if (count == 0)
            break;
        to.write({buffer.data(), static_cast<std::size_t>(count)});
    }
    to.commitNew();
}

} // namespace varnel
