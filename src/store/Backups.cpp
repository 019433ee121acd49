#include "store/Backups.h"

#include "store/DataFile.h"
#include "store/FileCopy.h"
#include "store/LibraryPath.h"
#include "store/LibraryStore.h"
#include "store/ReplacingFile.h"
#include "store/SessionStore.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstdio>

namespace varnel {

namespace {

void copyIfThere(const QString& source, const QString& target)
{
    if (QFileInfo::exists(source))
        copyFile(source, target);
}

/// Copies the stored files of the items that one folder has and the other has not. Yields a sentence for each
/// that a link keeps out of reach: one such item is no reason to go without a backup of all the others.
QStringList copyStoredFiles(const std::vector<LibraryItem>& items, const QString& from, const QString& to)
{
    QStringList leftOut;
    for (const LibraryItem& item : items) {
        if (!item.relativePath || !whyNotLibraryPath(*item.relativePath).isEmpty())
            continue;
        if (!whyNotStored(from, *item.relativePath).isEmpty() ||
            !whyNotStored(to, *item.relativePath).isEmpty()) {
            leftOut.append(
                QStringLiteral("The file of \"%1\" was left out: a link stands in its way.").arg(item.title));
            continue;
        }
        const QString source = libraryFile(from, *item.relativePath);
        const QString target = libraryFile(to, *item.relativePath);
        if (!QFileInfo(source).isFile() || QFileInfo::exists(target))
            continue;
        makeFolder(QFileInfo(target).path());
        copyFile(source, target);
    }
    return leftOut;
}

} // namespace

QString backupsFolder(const QString& root)
{
    return root + QStringLiteral("/Backups");
}

QString backupName(Instant now)
{
    return toIso8601(now).replace(QLatin1Char(':'), QLatin1Char('-'));
}

/// Removes what a backup left that the end of the program interrupted.
static void removeUnfinished(const QString& backups)
{
    const QStringList names = QDir(backups).entryList({QLatin1Char('*') + ReplacingFile::temporarySuffix()},
                                                      QDir::Dirs | QDir::NoSymLinks);
    for (const QString& name : names)
        QDir(backups + QLatin1Char('/') + name).removeRecursively();
}

Backup makeBackup(const QString& root, const std::vector<LibraryItem>& items, Instant now)
{
    const QString name = backupName(now);
    Backup backup{.name = name, .folder = backupsFolder(root) + QLatin1Char('/') + name, .leftOut = {}};
    if (QFileInfo::exists(backup.folder))
        throw fileError(backup.folder, QStringLiteral("could not be made"), EEXIST);
    removeUnfinished(backupsFolder(root));
    // Half a backup would be taken for a whole one on the day it is needed, so it gets its name at the end.
    const QString unfinished = backup.folder + ReplacingFile::temporarySuffix();
    try {
        makeFolder(unfinished);
        copyIfThere(SessionStore::fileIn(root), SessionStore::fileIn(unfinished));
        copyIfThere(LibraryStore::indexIn(root), LibraryStore::indexIn(unfinished));
        backup.leftOut = copyStoredFiles(items, root, unfinished);
        if (::rename(QFile::encodeName(unfinished).constData(),
                     QFile::encodeName(backup.folder).constData()) != 0)
            throw fileError(backup.folder, QStringLiteral("could not be made"), errno);
        syncFolder(backupsFolder(root));
    } catch (const Error&) {
        QDir(unfinished).removeRecursively();
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
    for (const QString& name : names) {
        if (!name.endsWith(ReplacingFile::temporarySuffix()))
            backups.push_back({.name = name, .folder = folder.filePath(name), .leftOut = {}});
    }
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
    contents.leftOut = copyStoredFiles(contents.items, backup.folder, root);
    return contents;
}

} // namespace varnel
