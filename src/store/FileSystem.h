#pragma once

#include <QtGlobal>

struct stat;

namespace varnel {

/// Waits until what was written to an open file is on the disk; false with errno set when that failed.
bool syncFile(int descriptor);

/// Lets the disk begin with a part of an open file, where the system can be told to; a later syncFile() then
/// has less to wait for.
void startSync(int descriptor, qint64 offset, qint64 size);

/// When the contents were changed last, in nanoseconds since 1970.
qint64 modificationTime(const struct stat& status);

} // namespace varnel
