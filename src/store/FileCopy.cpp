#include "store/FileCopy.h"

#include "store/FileAccess.h"
#include "store/ReplacingFile.h"

#include <QFileInfo>

#include <algorithm>
#include <array>

namespace varnel {

void copyFile(const QString& source, const QString& target)
{
    const FileDescriptor from = openRegularFile(source);
    ReplacingFile to(target);
    std::array<char, 128 * 1024> buffer{};
    // A file that grows as fast as it is read would have no end.
    for (auto left = static_cast<std::size_t>(stampOf(from.get()).size); left > 0;) {
        const std::size_t count = readInto(from.get(), buffer.data(), std::min(buffer.size(), left), source);
        if (count == 0)
            break;
        to.write({buffer.data(), count});
        left -= count;
    }
    to.commitNew();
}

} // namespace varnel
