#pragma once

#include <QString>

#include <stop_token>

namespace varnel {

/// What is wrong with a path relative to the data folder, in a few words such as "it leads out of the data
/// folder"; empty if it may be used for stored copies. Only names below the data folder are allowed, and none
/// that belongs to the program's own files.
QString whyNotLibraryPath(const QString& relativePath);

/// The same for a path in a data folder, where a link on the way is wrong too: it may lead anywhere.
QString whyNotStored(const QString& root, const QString& relativePath);

/// The path of a stored copy. Throws Error when whyNotStored() says something. Whether there is a file is not
/// looked at.
QString libraryFile(const QString& root, const QString& relativePath);

/// Removes what an interrupted import left in the folders of the library: parts of copies whose names say so
/// and that nobody has written to for a minute. Blocks for as long as the disk does; never fails.
void removeUnfinishedCopies(const QString& root, const std::stop_token& stop);

} // namespace varnel
