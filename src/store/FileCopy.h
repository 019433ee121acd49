#pragma once

#include <QString>

namespace varnel {

/// Copies a regular file, as long as it is at the beginning, to a path at which there is nothing yet; the
/// folder must be there. The copy is complete or not there at all, on the disk, and for the user only. Throws
/// Error, also when something is in its place.
void copyFile(const QString& source, const QString& target);

} // namespace varnel
