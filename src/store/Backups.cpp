#include "store/Backups.h"

#include "store/DataFile.h"
#include "store/FileCopy.h"
#include "store/LibraryPath.h"
#include "store/LibraryStore.h"
#include "store/SessionStore.h"

#include <QDir>
#include <QFileInfo>

namespace varnel {

namespace {

void copyIfThere(const QString& source, const QString& target)
{
    if (QFileInfo::exists(source))
        copyFile(source, target);
}

/// Copies the stored files of the items that one folder has and the other has not.
void copyStoredFiles(const std::vector<LibraryItem>& items, const QString& from, const QString& to)
{
    for (const LibraryItem& item : items) {
        if (!item.relativePath || !whyNotLibraryPath(*item.relativePath).isEmpty())
            continue;
        const QString source = libraryFile(from, *item.relativePath);
        const QString target = libraryFile(to, *item.relativePath);
        if (!QFileInfo(source).isFile() || QFileInfo::exists(target))
            continue;
        makeFolder(QFileInfo(target).path());
        copyFile(source, target);
    }
}

} // namespace

QString backupsFolder(const QString& root)
{
    return root + QStringLiteral("/Backups");
}

Backup makeBackup(const QString& root, const std::vector<LibraryItem>& items, Instant now)
{
    const QString name = toIso8601(now).replace(QLatin1Char(':'), QLatin1Char('-'));
    Backup backup{.name = name, .folder = backupsFolder(root) + QLatin1Char('/') + name};
    const bool isNew = !QFileInfo::exists(backup.folder);
    makeFolder(backup.folder);
    try {
        copyIfThere(SessionStore::fileIn(root), SessionStore::fileIn(backup.folder));
        copyIfThere(LibraryStore::indexIn(root), LibraryStore::indexIn(backup.folder));
        copyStoredFiles(items, root, backup.folder);
    } catch (const Error&) {
        // Half a backup would be taken for a whole one on the day it is needed.
        if (isNew)
            QDir(backup.folder).removeRecursively();
        throw;
    }
    return backup;
}

std::vector<Backup> listBackups(const QString& root)
{
    const QDir folder(backupsFolder(root));
    const QStringList names =
        folder.entryList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::NoSymLinks, QDir::Name | QDir::Reversed);
    std::vector<Backup> backups;
    backups.reserve(static_cast<std::size_t>(names.size()));
    for (const QString& name : names)
        backups.push_back({.name = name, .folder = folder.filePath(name)});
    return backups;
}

BackupContents restoreBackup(const QString& root, const Backup& backup)
{
    if (!QFileInfo::exists(SessionStore::fileIn(backup.folder)))
        throw Error(QStringLiteral("The backup %1 holds no conversations.").arg(backup.folder));
    BackupContents contents;
    contents.sessions = SessionStore(backup.folder).load();
    contents.items = DataFile(LibraryStore::indexIn(backup.folder))
                         .load(decodeLibraryItems)
                         .value_or(std::vector<LibraryItem>());
    copyStoredFiles(contents.items, backup.folder, root);
    return contents;
}

} // namespace varnel
