#include "store/StorageLocation.h"

#include "store/CloudContainer.h"
#include "store/FileAccess.h"
#include "store/FileCopy.h"
#include "store/RecoveryFile.h"
#include "store/ReplacingFile.h"
#include "store/SessionStore.h"

#include <QDir>
#include <QDirIterator>
#include <QStandardPaths>

namespace varnel {

StorageFolders systemStorageFolders()
{
    return {.applicationSupport = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation),
            .cloudContainer = cloudContainer()};
}

LibraryLocation resolveLocation(const StorageFolders& folders)
{
    const QString local = folders.applicationSupport + QStringLiteral("/Varnel");
    const bool usingCloud = folders.cloudContainer.has_value();
    const QString folder = usingCloud ? *folders.cloudContainer + QStringLiteral("/Documents/Varnel") : local;
    try {
        makeFolder(folder);
    } catch (const Error&) {
        // The first save says so, with its reason.
    }
    if (usingCloud)
        copyMissingFiles(local, folder);
    return {.url = QUrl::fromLocalFile(folder + QLatin1Char('/')), .usingCloud = usingCloud};
}

void copyMissingFiles(const QString& source, const QString& destination)
{
    const QDir from(QDir::cleanPath(source));
    const QString to = QDir::cleanPath(destination);
    // What was kept of a reply belongs to the conversations beside it, which the other folder has its own of.
    const bool hasConversations = QFileInfo::exists(SessionStore::fileIn(to));
    QDirIterator files(from.path(), QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot,
                       QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString relative = from.relativeFilePath(files.next());
        // A file that is still being written has a name of its own.
        if (relative.startsWith(QLatin1String("Backups/")) ||
            relative.endsWith(ReplacingFile::temporarySuffix()) ||
            (hasConversations && from.filePath(relative) == RecoveryFile::fileIn(from.path())))
            continue;
        const QString target = to + QLatin1Char('/') + relative;
        const QFileInfo there(target);
        if (there.exists() || there.isSymLink())
            continue;
        try {
            makeFolder(there.path());
            copyFile(files.filePath(), target);
        } catch (const Error&) {
            // The others are copied all the same, and this one is tried again at the next start.
        }
    }
}

QString locationText(const LibraryLocation& location)
{
    if (location.usingCloud)
        return QStringLiteral("Library and conversations are in the Varnel iCloud container.");
    return QStringLiteral("iCloud is not available to this build. Files stay in Application Support and are "
                          "copied into iCloud when the container appears.");
}

} // namespace varnel
