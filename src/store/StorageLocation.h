#pragma once

#include "store/LibraryLocation.h"

#include <QString>

#include <optional>

namespace varnel {

/// The folders of the system that data may be kept in.
struct StorageFolders
{
    /// The user's folder for the data of programs.
    QString applicationSupport;
    /// The program's folder that is kept in step across computers, if there is one.
    std::optional<QString> cloudContainer;
};

/// The folders of this system.
StorageFolders systemStorageFolders();

/// Chooses the data folder and makes it; that it cannot be made is left to the first save to say. When the
/// cloud is used, files that only the local folder has are copied there.
LibraryLocation resolveLocation(const StorageFolders& folders);

/// Copies the files below one folder that another lacks, at any depth, backups left out, and what was kept of
/// a reply where the other has conversations of its own. Nothing is overwritten, and a file that cannot be
/// copied is passed over.
void copyMissingFiles(const QString& source, const QString& destination);

/// What the Files settings say about the location.
QString locationText(const LibraryLocation& location);

} // namespace varnel
