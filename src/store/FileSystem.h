#pragma once

#include <QtGlobal>

struct stat;

namespace varnel {

/// Waits until what was written to an open file is on the disk; false with errno set when that failed.
bool syncFile(int descriptor);

/// When the contents were changed last, in nanoseconds since 1970.
qint64 modificationTime(const struct stat& status);

} // namespace varnel
