#pragma once

#include <QString>

namespace varnel {

/// What is wrong with a path relative to the data folder, in a few words such as "it leads out of the data
/// folder"; empty if it may be used for stored copies. Only names below the data folder are allowed, and none
/// that belongs to the program's own files.
QString whyNotLibraryPath(const QString& relativePath);

/// The path of a stored copy. Throws Error when the relative path may not be used, or when a link on the way
/// leads out of the data folder. Whether there is a file is not looked at.
QString libraryFile(const QString& root, const QString& relativePath);

} // namespace varnel
