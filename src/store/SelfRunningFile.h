#pragma once

#include <QString>

namespace varnel {

/// A path as the least careful file system compares it: names that differ in case, in how their characters
/// are composed, in invisible characters or in blanks and dots at their end are one and the same there.
QString foldedPath(const QString& path);

/// Whether something runs a file at this place without anybody starting it by name: what git, ssh, a shell,
/// a login, an editor or a build server reads on its own. Names are compared by foldedPath().
bool runsByItself(const QString& path);

} // namespace varnel
